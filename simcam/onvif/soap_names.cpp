#include "simcam/onvif/soap_names.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

namespace simcam {
namespace {

struct Name {
  std::string_view usual;
  std::string_view strange;
  std::string_view space;
};

constexpr Name kNames[] = {
    // that of SOAP first
    {"env", "S-1", "http://www.w3.org/2003/05/soap-envelope"},
    {"tds", "trt", "http://www.onvif.org/ver10/device/wsdl"},
    {"trt", "tt", "http://www.onvif.org/ver10/media/wsdl"},
    {"tr2", "_m.two", "http://www.onvif.org/ver20/media/wsdl"},
    {"tmd", "io", "http://www.onvif.org/ver10/deviceIO/wsdl"},
    {"tev", "e", "http://www.onvif.org/ver10/events/wsdl"},
    {"tan", "a", "http://www.onvif.org/ver20/analytics/wsdl"},
    {"tt", "tds", "http://www.onvif.org/ver10/schema"},
    {"ter", "env", "http://www.onvif.org/ver10/error"},
    {"tns1", "topics", "http://www.onvif.org/ver10/topics"},
    {"wsnt", "n", "http://docs.oasis-open.org/wsn/b-2"},
    {"wstop", "t", "http://docs.oasis-open.org/wsn/t-1"},
    {"xs", "ter", "http://www.w3.org/2001/XMLSchema"},
    {"d", "wsd", "http://schemas.xmlsoap.org/ws/2005/04/discovery"},
    {"wsa", "ad", "http://schemas.xmlsoap.org/ws/2004/08/addressing"},
    {"dn", "nt", "http://www.onvif.org/ver10/network/wsdl"},
};

using NameSet = std::vector<const Name*>;

bool Has(const NameSet& names, const Name* name) { return std::find(names.begin(), names.end(), name) != names.end(); }

/// The prefix that begins at a place of a document; null if none does. Before it stands markup, a quote or a blank.
const Name* PrefixAt(std::string_view xml, size_t at) {
  if (at == 0 || std::string_view("</>\" ").find(xml[at - 1]) == std::string_view::npos) return nullptr;
  for (const Name& name : kNames) {
    const size_t end = at + name.usual.size();
    if (xml.substr(at).starts_with(name.usual) && xml.substr(end).starts_with(':') && end + 1 < xml.size() &&
        std::isalpha(static_cast<unsigned char>(xml[end + 1])) != 0) {
      return &name;
    }
  }
  return nullptr;
}

NameSet UsedIn(std::string_view xml) {
  NameSet used;
  for (size_t i = 0; i < xml.size(); ++i) {
    const Name* name = PrefixAt(xml, i);
    if (name != nullptr && !Has(used, name)) used.push_back(name);
  }
  return used;
}

/// With the prefixes that `prefixOf` gives to their names.
template <class PrefixOf>
std::string Renamed(std::string_view xml, PrefixOf prefixOf) {
  std::string renamed;
  for (size_t i = 0; i < xml.size();) {
    const Name* name = PrefixAt(xml, i);
    renamed += name == nullptr ? xml.substr(i, 1) : prefixOf(*name);
    i += name == nullptr ? 1 : name->usual.size();
  }
  return renamed;
}

std::string Renamed(std::string_view xml, Prefixes prefixes) {
  if (prefixes != Prefixes::kStrange) return std::string(xml);
  return Renamed(xml, [](const Name& name) { return name.strange; });
}

/// An envelope with the prefix of its body's element in place of the schema's.
std::string WithSchemaOfService(const std::string& envelope) {
  constexpr std::string_view kBody = "<env:Body><";
  const Name* service = PrefixAt(envelope, envelope.find(kBody) + kBody.size());
  return Renamed(envelope, [service](const Name& name) { return name.usual == "tt" ? service->usual : name.usual; });
}

std::string Declarations(const NameSet& names, Prefixes prefixes) {
  std::string text;
  for (const Name* name : names) {
    if (prefixes == Prefixes::kUndeclared && name != &kNames[0]) continue;
    text += " xmlns:" + std::string(prefixes == Prefixes::kStrange ? name->strange : name->usual) + "=\"" +
            std::string(name->space) + "\"";
  }
  return text;
}

}  // namespace

std::string WithDeclarations(const std::string& element, Prefixes prefixes) {
  if (prefixes == Prefixes::kOfService) return WithDeclarations(WithSchemaOfService(element), Prefixes::kUsual);
  std::string xml;
  std::vector<NameSet> scopes = {{}};  // declared names, an entry for each open element
  const std::string_view all = element;
  for (size_t at = 0, next = 0; at < all.size(); at = next) {
    next = std::min(all.find('<', at + 1), all.size());
    const std::string_view piece = all.substr(at, next - at);  // a tag and the text after it
    if (piece.starts_with("</")) {
      scopes.pop_back();
      xml += Renamed(piece, prefixes);
      continue;
    }
    NameSet added;
    for (const Name* name : UsedIn(at == 0 && prefixes != Prefixes::kStrange ? all : piece)) {
      if (!Has(scopes.back(), name)) added.push_back(name);
    }
    const size_t nameEnd = piece.find_first_of(" />");
    xml += Renamed(piece.substr(0, nameEnd), prefixes) + Declarations(added, prefixes) +
           Renamed(piece.substr(nameEnd), prefixes);
    if (piece[piece.find('>') - 1] == '/') continue;
    scopes.push_back(scopes.back());
    scopes.back().insert(scopes.back().end(), added.begin(), added.end());
  }
  return xml;
}

}  // namespace simcam

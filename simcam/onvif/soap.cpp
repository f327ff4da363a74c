#include "simcam/onvif/soap.h"

#include <glib.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>
#include <sstream>

#include "simcam/onvif/soap_names.h"
#include "simcam/xml_text.h"

namespace simcam {
namespace {

constexpr const char* kEnvelope = "http://www.w3.org/2003/05/soap-envelope";
constexpr const char* kSecurity = "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-secext-1.0.xsd";
constexpr const char* kSecurityUtility =
    "http://docs.oasis-open.org/wss/2004/01/oasis-200401-wss-wssecurity-utility-1.0.xsd";
constexpr const char* kAddressing = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
constexpr const char* kDiscovery = "http://schemas.xmlsoap.org/ws/2005/04/discovery";

struct FreeXml {
  void operator()(xmlDoc* document) const noexcept { xmlFreeDoc(document); }
  void operator()(xmlChar* text) const noexcept { xmlFree(text); }
};
using XmlDocument = std::unique_ptr<xmlDoc, FreeXml>;
using XmlText = std::unique_ptr<xmlChar, FreeXml>;

std::string ToString(const xmlChar* text) { return text == nullptr ? "" : reinterpret_cast<const char*>(text); }

std::string NameOf(const xmlNode* node) { return ToString(node->name); }
std::string SpaceOf(const xmlNode* node) { return node->ns == nullptr ? "" : ToString(node->ns->href); }

std::string TextOf(const xmlNode* node) {
  const XmlText text(node == nullptr ? nullptr : xmlNodeGetContent(node));
  return text == nullptr ? "" : g_strstrip(reinterpret_cast<char*>(text.get()));
}

xmlNode* Child(xmlNode* parent, const char* space, const char* name) {
  if (parent == nullptr) return nullptr;
  for (xmlNode* child = xmlFirstElementChild(parent); child != nullptr; child = xmlNextElementSibling(child)) {
    if (NameOf(child) == name && SpaceOf(child) == space) return child;
  }
  return nullptr;
}

void CollectParameters(xmlNode* parent, std::vector<SoapRequest::Parameter>& parameters) {
  for (xmlNode* child = xmlFirstElementChild(parent); child != nullptr; child = xmlNextElementSibling(child)) {
    if (xmlFirstElementChild(child) != nullptr) {
      CollectParameters(child, parameters);
    } else {
      parameters.push_back({SpaceOf(child), NameOf(child), TextOf(child)});
    }
  }
}

std::optional<UsernameToken> ReadToken(xmlNode* header) {
  xmlNode* token = Child(Child(header, kSecurity, "Security"), kSecurity, "UsernameToken");
  if (token == nullptr) return std::nullopt;
  xmlNode* password = Child(token, kSecurity, "Password");
  std::string type;
  if (password != nullptr) type = ToString(XmlText(xmlGetNoNsProp(password, BAD_CAST "Type")).get());
  return UsernameToken{TextOf(Child(token, kSecurity, "Username")), TextOf(password), type,
                       TextOf(Child(token, kSecurity, "Nonce")), TextOf(Child(token, kSecurityUtility, "Created"))};
}

/// A list of qualified names, as "{namespace}name".
std::vector<std::string> ReadNames(xmlNode* node) {
  if (node == nullptr) return {};
  std::vector<std::string> names;
  std::istringstream words(TextOf(node));
  for (std::string word; words >> word;) {
    const size_t colon = word.find(':');
    const std::string prefix = colon == std::string::npos ? "" : word.substr(0, colon);
    const xmlNs* space = xmlSearchNs(node->doc, node, prefix.empty() ? nullptr : BAD_CAST prefix.c_str());
    names.push_back("{" + (space == nullptr ? "" : ToString(space->href)) + "}" +
                    (prefix.empty() ? word : word.substr(colon + 1)));
  }
  return names;
}

/// One within the other.
std::string Subcodes(const std::string& names) {
  if (names.empty()) return {};
  const size_t blank = names.find(' ');
  const std::string inner = blank == std::string::npos ? "" : Subcodes(names.substr(blank + 1));
  return "<env:Subcode><env:Value>" + names.substr(0, blank) + "</env:Value>" + inner + "</env:Subcode>";
}

}  // namespace

std::vector<std::string> SoapRequest::All(std::string_view parameter) const {
  std::vector<std::string> texts;
  for (const Parameter& given : parameters) {
    if (given.name == parameter && given.space == space) texts.push_back(given.text);
  }
  return texts;
}

std::string SoapRequest::Need(std::string_view parameter, std::string_view parameterSpace) const {
  for (const Parameter& given : parameters) {
    if (given.name == parameter && given.space == parameterSpace && !given.text.empty()) return given.text;
  }
  throw InvalidRequest("ter:InvalidArgs", std::string(parameter) + " is missing");
}

std::optional<SoapRequest> ReadSoap(const std::string& xml) {
  const XmlDocument document(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr,
                                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (!document || document->intSubset != nullptr) return std::nullopt;
  xmlNode* envelope = xmlDocGetRootElement(document.get());
  if (envelope == nullptr || NameOf(envelope) != "Envelope" || SpaceOf(envelope) != kEnvelope) return std::nullopt;
  xmlNode* body = Child(envelope, kEnvelope, "Body");
  xmlNode* action = body == nullptr ? nullptr : xmlFirstElementChild(body);
  if (action == nullptr || xmlNextElementSibling(action) != nullptr) return std::nullopt;
  xmlNode* header = Child(envelope, kEnvelope, "Header");
  SoapRequest request{SpaceOf(action),
                      NameOf(action),
                      {},
                      ReadToken(header),
                      TextOf(Child(header, kAddressing, "Action")),
                      TextOf(Child(header, kAddressing, "MessageID")),
                      ReadNames(Child(action, kDiscovery, "Types"))};
  CollectParameters(action, request.parameters);
  return request;
}

std::string SoapAnswer(const std::string& body, Prefixes prefixes, const std::string& header) {
  const std::string head = header.empty() ? "" : "<env:Header>" + header + "</env:Header>";
  const std::string envelope = "<env:Envelope>" + head + "<env:Body>" + body + "</env:Body></env:Envelope>";
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + WithDeclarations(envelope, prefixes) + "\n";
}

std::string SoapFaultAnswer(const SoapFault& fault, Prefixes prefixes) {
  return SoapAnswer(
      Fill("<env:Fault><env:Code><env:Value>{code}</env:Value>{subcodes}</env:Code>"
           "<env:Reason><env:Text xml:lang=\"en\">{reason}</env:Text></env:Reason></env:Fault>",
           {{"code", fault.code}, {"subcodes", Subcodes(fault.subcode)}, {"reason", Escape(fault.what())}}),
      prefixes);
}

}  // namespace simcam

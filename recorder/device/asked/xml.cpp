#include "recorder/device/asked/xml.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "recorder/utility/handle.h"
#include "recorder/utility/limits.h"
#include "recorder/utility/text.h"

namespace recorder {
namespace {

using ParserHandle = std::unique_ptr<xmlParserCtxt, Deleter<xmlFreeParserCtxt>>;
using XmlText = std::unique_ptr<xmlChar, Deleter<[](xmlChar* text) { xmlFree(text); }>>;

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

const xmlChar* Chars(const std::string& text) { return reinterpret_cast<const xmlChar*>(text.c_str()); }

/// Without a prefix that was never declared, which libxml2 leaves in the name.
std::string_view LocalName(const xmlNode* node) {
  const std::string_view name = View(node->name);
  return node->ns == nullptr ? name.substr(name.rfind(':') + 1) : name;
}

bool Matches(const xmlNode* node, std::string_view nameSpace, std::string_view name) {
  if (node->type != XML_ELEMENT_NODE || LocalName(node) != name) return false;
  return nameSpace == kAnyNamespace || nameSpace == (node->ns == nullptr ? "" : View(node->ns->href));
}

/// The first of `node` and its next siblings that matches, or null.
const xmlNode* FirstFrom(const xmlNode* node, std::string_view nameSpace, std::string_view name) {
  while (node != nullptr && !Matches(node, nameSpace, name)) node = node->next;
  return node;
}

/// The namespace by which children of `parent` are to be found: any, which is noted, where the document may be read by
/// names and has none in `nameSpace`.
std::string_view NamespaceToUse(const xmlNode* parent, std::string_view nameSpace, std::string_view name) {
  auto* isReadByName = static_cast<bool*>(parent->doc->_private);
  if (isReadByName == nullptr || FirstFrom(parent->children, nameSpace, name) != nullptr) return nameSpace;
  if (FirstFrom(parent->children, kAnyNamespace, name) != nullptr) *isReadByName = true;
  return kAnyNamespace;
}

/// Ends the parsing before anything of a document type is looked at: whoever declares entities means no good.
void RefuseDocumentType(void* parser, const xmlChar* /*name*/, const xmlChar* /*externalId*/,
                        const xmlChar* /*systemId*/) {
  xmlStopParser(static_cast<xmlParserCtxtPtr>(parser));
}

/// True when `text`, which begins with '&', begins a reference that needs no document type (XML 1.0 section 4.1).
bool BeginsReference(std::string_view text) {
  constexpr std::array<std::string_view, 5> kNamed{"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"};
  if (std::any_of(kNamed.begin(), kNamed.end(), [&](auto name) { return text.starts_with(name); })) return true;
  if (!text.starts_with("&#")) return false;
  const std::size_t digits = text.starts_with("&#x") ? 3 : 2;
  const std::size_t end = text.find_first_not_of(digits == 3 ? "0123456789abcdefABCDEF" : "0123456789", digits);
  return end != std::string_view::npos && end > digits && text[end] == ';';
}

/// Length of the tag that `text` begins with, without its '>'; nothing when another '<' or the end comes first. Quoted
/// values may hold whatever they like.
std::optional<std::size_t> TagLength(std::string_view text) {
  char quote = '\0';
  for (std::size_t i = 1; i < text.size(); ++i) {
    const char c = text[i];
    if (quote == '\0' && c == '>') return i;
    if (quote == '\0' && c == '<') return std::nullopt;
    if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == quote) {
      quote = '\0';
    }
  }
  return std::nullopt;
}

/// Takes what stands between `start`, which `text` begins with, and `end` off it, both included; all when there is no
/// end.
std::string_view TakeBetween(std::string_view& text, std::string_view start, std::string_view end) {
  const std::size_t length = std::min(text.find(end, start.size()), text.size());
  const std::string_view taken = text.substr(start.size(), length - start.size());
  text.remove_prefix(std::min(length + end.size(), text.size()));
  return taken;
}

/// Notices what no camera sends: what would keep the parser busy for minutes, since it compares each attribute of a tag
/// with all others, and the name of each element with all namespaces that are declared around it; and what would become
/// a tree of many times its size.
class TagLimits {
 public:
  /// `tag` is the next one of the document, closing tags included.
  bool Admit(std::string_view tag) {
    if (tag.starts_with("</")) {
      Close();
      return true;
    }
    if (!tag.starts_with("<!") && !tag.starts_with("<?") && !tag.ends_with('/')) Open(tag.size());
    const auto attributes = static_cast<std::size_t>(std::count(tag.begin(), tag.end(), '='));
    const auto elements = std::count(tag.begin(), tag.end(), '<');  // the parser may see some where we see a value
    parts_ += static_cast<std::size_t>(elements) + attributes;
    return tag.size() <= kLongestXmlTag && attributes <= kMostXmlAttributes && openLength_ <= kLongestOpenXmlTags &&
           parts_ <= kMostXmlParts;
  }

 private:
  void Open(std::size_t length) {
    open_.push_back(length);
    openLength_ += length;
  }

  void Close() {
    if (open_.empty()) return;
    openLength_ -= open_.back();
    open_.pop_back();
  }

  std::size_t parts_ = 0;
  std::size_t openLength_ = 0;
  std::vector<std::size_t> open_;  // length of the tag of each element that is not closed
};

/// `text` as the parser is to read it: with no tag that the limits have not seen, and where the parser's own recovery
/// would lose something, in other words. It drops an '&' that begins no reference with the word behind it, and cameras
/// put addresses with a query into their answers as they are. It loses its way in a comment that ends by "--->", in
/// one or a CDATA section with a control character, and in tags without an end. Nothing for what no camera sends.
std::optional<std::string> Tidied(std::string_view text) {
  const std::size_t longest = text.size() + text.size() / 4;
  TagLimits limits;
  std::string tidied;
  tidied.reserve(longest);
  const auto take = [&](std::size_t length) {
    tidied += text.substr(0, length);
    text.remove_prefix(length);
  };
  const auto takeSign = [&](std::string_view reference) {
    tidied += reference;
    text.remove_prefix(1);
  };
  while (!text.empty() && tidied.size() + text.size() <= longest) {
    take(std::min(text.find_first_of("&<"), text.size()));
    if (text.starts_with('&')) {
      takeSign(BeginsReference(text) ? "&" : "&amp;");
    } else if (text.starts_with("<!--")) {
      TakeBetween(text, "<!--", "-->");
    } else if (text.starts_with("<![CDATA[")) {
      tidied += XmlEscaped(TakeBetween(text, "<![CDATA[", "]]>"));
    } else if (const auto length = TagLength(text)) {
      if (!limits.Admit(text.substr(0, *length))) return std::nullopt;
      take(*length);
    } else if (!text.empty()) {
      takeSign("&lt;");
    }
  }
  return text.empty() && tidied.size() <= longest ? std::optional(std::move(tidied)) : std::nullopt;
}

}  // namespace

std::string XmlElement::Name() const { return node_ == nullptr ? "" : std::string(LocalName(node_)); }

std::string XmlElement::Namespace() const {
  return node_ == nullptr || node_->ns == nullptr ? "" : std::string(View(node_->ns->href));
}

XmlElement XmlElement::Child(std::string_view nameSpace, std::string_view name) const {
  if (node_ == nullptr) return {};
  return XmlElement(FirstFrom(node_->children, NamespaceToUse(node_, nameSpace, name), name));
}

std::vector<XmlElement> XmlElement::Children(std::string_view nameSpace, std::string_view name) const {
  std::vector<XmlElement> found;
  if (node_ == nullptr) return found;
  const std::string_view used = NamespaceToUse(node_, nameSpace, name);
  for (const xmlNode* child = node_->children; child != nullptr; child = child->next) {
    if (Matches(child, used, name)) found.emplace_back(child);
  }
  return found;
}

std::vector<XmlElement> XmlElement::Children() const {
  std::vector<XmlElement> found;
  for (const xmlNode* child = node_ == nullptr ? nullptr : node_->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) found.emplace_back(child);
  }
  return found;
}

std::string XmlElement::Text() const {
  if (node_ == nullptr) return "";
  const XmlText text(xmlNodeGetContent(node_));
  return std::string(Trimmed(View(text.get())));
}

std::string XmlElement::ChildTexts(std::string_view nameSpace, std::initializer_list<std::string_view> names) const {
  std::string texts;
  for (const std::string_view name : names) {
    const std::string text = Child(nameSpace, name).Text();
    if (!text.empty()) texts += (texts.empty() ? "" : " ") + text;
  }
  return texts;
}

std::string XmlElement::Attribute(std::string_view name) const {
  if (node_ == nullptr) return "";
  const XmlText text(xmlGetNoNsProp(node_, Chars(std::string(name))));
  return std::string(Trimmed(View(text.get())));
}

void XmlDocument::Free::operator()(_xmlDoc* document) const { xmlFreeDoc(document); }

XmlDocument::XmlDocument(std::string_view text, bool* isReadByName) {
  static std::once_flag isPrepared;  // before the first use by several threads
  std::call_once(isPrepared, xmlInitParser);
  const std::optional<std::string> whole = Tidied(text);
  if (!whole) return;
  const ParserHandle parser(xmlNewParserCtxt());
  if (!parser) throw std::bad_alloc();
  parser->sax->internalSubset = &RefuseDocumentType;
  constexpr int kOptions = XML_PARSE_RECOVER | XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                           XML_PARSE_IGNORE_ENC;  // another encoding could hide tags from our limits
  document_.reset(
      xmlCtxtReadMemory(parser.get(), whole->data(), static_cast<int>(whole->size()), nullptr, "UTF-8", kOptions));
  if (document_) document_->_private = isReadByName;
}

XmlElement XmlDocument::Root() const { return XmlElement(document_ ? xmlDocGetRootElement(document_.get()) : nullptr); }

std::string XmlEscaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

}  // namespace recorder

#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// XML as cameras write it, over libxml2. Names are compared by namespace and local name, never by prefix. A document
// may be read by local names alone where no element has the namespace that is asked for: some cameras put the elements
// of one standard into the namespace of another, or use prefixes that they never declare.

struct _xmlDoc;   // libxml2's own name
struct _xmlNode;  // libxml2's own name

namespace recorder {

/// Matches elements of every namespace, and of none.
inline constexpr std::string_view kAnyNamespace = "*";

/// One element of an XmlDocument, or none: asked for anything, no element has no children, no text and no attributes.
/// Valid as long as its document.
class XmlElement {
 public:
  XmlElement() = default;
  explicit XmlElement(const _xmlNode* node) : node_(node) {}

  explicit operator bool() const { return node_ != nullptr; }

  std::string Name() const;       ///< local name
  std::string Namespace() const;  ///< "" also for a prefix that was never declared

  XmlElement Child(std::string_view nameSpace, std::string_view name) const;  ///< the first such child
  std::vector<XmlElement> Children(std::string_view nameSpace, std::string_view name) const;
  std::vector<XmlElement> Children() const;

  /// All text within the element, without white space at both ends.
  std::string Text() const;

  /// Texts of the first children of these names, those that have one, with a blank between.
  std::string ChildTexts(std::string_view nameSpace, std::initializer_list<std::string_view> names) const;

  /// Value of the attribute of no namespace, without white space at both ends; "" when there is none.
  std::string Attribute(std::string_view name) const;

 private:
  const _xmlNode* node_ = nullptr;
};

/// A parsed document. Thread: separate documents share nothing.
class XmlDocument {
 public:
  XmlDocument() = default;  ///< without a root element

  /// Parses what can be made sense of: an '&' that begins no reference stands for itself, and what is missing at the
  /// end is added. No element at the root when `text` is no XML, holds a document type (entities are refused), or is
  /// nested deeper than any camera's answer. Never reads another file or address. With `isReadByName`, which outlives
  /// the document, children that are not there by their namespace are found by their local name alone; it becomes true
  /// once that happens.
  explicit XmlDocument(std::string_view text, bool* isReadByName = nullptr);

  XmlElement Root() const;

 private:
  struct Free {
    void operator()(_xmlDoc* document) const;
  };
  std::unique_ptr<_xmlDoc, Free> document_;
};

/// `text` with the signs that mean something in XML written as references.
std::string XmlEscaped(std::string_view text);

}  // namespace recorder

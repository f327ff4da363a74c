#pragma once

#include <string>
#include <string_view>

namespace recorder {

// Entity tags (RFC 9110 section 8.8.3), by which clients tell whether something is still what they know.

/// The tag of a text.
std::string TagOf(std::string_view text);

/// That of a revision, a number: of a record as its user edits it. What the recorder tells beside it may change.
std::string TagOf(int revision);

/// The header line that tells a tag.
std::string TagLine(const std::string& tag);

/// Whether an If-None-Match names the tag: "*", or a list of tags that are compared weakly (section 13.1.2).
bool IsNoneMatch(const std::string& tag, std::string_view ifNoneMatch);

/// Whether an If-Match does: the same, but a weak tag is never the one (section 13.1.1).
bool IsMatch(const std::string& tag, std::string_view ifMatch);

}  // namespace recorder

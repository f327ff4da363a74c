#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace recorder {

// The headings of a list of cameras, in the one table that the page reads them by, too: page/headings.json, which is
// built into the program. Capitals, blanks, "_" and "-" make no difference.

/// `heading` as it is compared.
std::string PlainHeading(std::string_view heading);

/// What a column of that heading holds: "name", "address", "port", "user", "password", "vendor", "model", "channel",
/// "path", "codec" or "stream"; "" for a result of the page's, which nobody reads back; nothing when it is not known.
std::optional<std::string> MemberOf(std::string_view heading);

/// The heading that a list is written with.
const std::string& HeadingOf(const std::string& member);

/// All of these, with commas between them.
std::string AllHeadings();

}  // namespace recorder

#pragma once

#include <string>
#include <string_view>
#include <vector>

// What stands in a path of one camera that is nobody else's business. Pure functions, any thread.

namespace recorder {

/// A text that is known to be private, such as a camera's password. Both must outlive it.
struct PrivateText {
  std::string_view what;  ///< for people: "the camera's password"
  std::string_view text;  ///< "": none
};

/// What of a camera or its owner may stand in `path`, in words for people, such as "a password"; "" for nothing. It is
/// one of `known` as a whole word, whatever its capitals; a login, a token or a serial number by the name that it has
/// there ("password=", "/password/"); an address; a long text that looks as if it were drawn by lot; or any other value
/// behind a name that is no common one (see path_values.h). Names of streams and profiles stay ("/onvif/profile1",
/// "?token=Profile_1"): they are the same in all cameras of a model. In doubt it is private.
std::string FindPrivatePart(std::string_view path, const std::vector<PrivateText>& known = {});

/// The same of a login alone, and without a doubt: behind "user=", "password=" and the like, where no short number
/// stands, or in front of an address.
std::string FindPathLogin(std::string_view path);

/// Whether `path` holds that password, under whatever name, and it is more than letters, and no common value.
bool HoldsPassword(std::string_view path, std::string_view password);

}  // namespace recorder

#pragma once

#include <glib-object.h>

#include <memory>
#include <string>

namespace simcam {

/// Deleters for what GLib hands out.

struct FreeByGlib {
  void operator()(void* memory) const noexcept { g_free(memory); }
};
using GlibText = std::unique_ptr<char, FreeByGlib>;

struct UnrefGlib {
  void operator()(void* object) const noexcept { g_object_unref(object); }
};

inline std::string RandomUuid() { return GlibText(g_uuid_string_random()).get(); }

/// The bytes that a base64 text stands for; what is no base64 in it is passed over.
inline std::string DecodeBase64(const std::string& text) {
  gsize size = 0;
  const std::unique_ptr<guchar, FreeByGlib> bytes(g_base64_decode(text.c_str(), &size));
  return {bytes.get(), bytes.get() + size};
}

}  // namespace simcam

# Each library is looked for here, once; tests/googletest.cmake has GoogleTest. docs/dependencies.md says what each is
# for.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
if(MODULE_ONLY)
  return()
endif()

# The recorder's.
find_package(OpenSSL REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(SQLiteCpp REQUIRED)
find_package(valijson REQUIRED)  # headers alone, in the system's include folder
pkg_check_modules(LIBAV REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(LIBCURL REQUIRED IMPORTED_TARGET libcurl)
pkg_check_modules(LIBJPEG REQUIRED IMPORTED_TARGET libjpeg)
find_library(LIBYUV_LIBRARY yuv REQUIRED)  # it has neither a pkg-config file nor one of CMake's
add_library(LIBYUV::LIBYUV UNKNOWN IMPORTED)
set_target_properties(LIBYUV::LIBYUV PROPERTIES IMPORTED_LOCATION ${LIBYUV_LIBRARY})
pkg_check_modules(LIBXML2 REQUIRED IMPORTED_TARGET libxml-2.0)
pkg_check_modules(SECCOMP REQUIRED IMPORTED_TARGET libseccomp)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
if(PRODUCTS_ONLY OR CMAKE_CROSSCOMPILING)
  return()
endif()

# Those of simulated cameras, tests and benchmarks.
pkg_check_modules(LIBAVUTIL REQUIRED IMPORTED_TARGET libavutil)
pkg_check_modules(GSTREAMER REQUIRED IMPORTED_TARGET gstreamer-1.0 gstreamer-app-1.0 gstreamer-video-1.0
                  gstreamer-sdp-1.0 gstreamer-rtsp-1.0 gstreamer-rtsp-server-1.0 gio-2.0)

#pragma once

#include <string_view>

// Names that ONVIF's service descriptions and schemas give to things.

namespace recorder::onvif {

inline constexpr std::string_view kDeviceNamespace = "http://www.onvif.org/ver10/device/wsdl";
inline constexpr std::string_view kMedia1Namespace = "http://www.onvif.org/ver10/media/wsdl";
inline constexpr std::string_view kMedia2Namespace = "http://www.onvif.org/ver20/media/wsdl";
inline constexpr std::string_view kDeviceIoNamespace = "http://www.onvif.org/ver10/deviceIO/wsdl";
inline constexpr std::string_view kEventsNamespace = "http://www.onvif.org/ver10/events/wsdl";
inline constexpr std::string_view kSchemaNamespace = "http://www.onvif.org/ver10/schema";

inline constexpr char kDevicePath[] = "/onvif/device_service";  // the same for every camera (ONVIF Core section 5.1.1)

/// A service of a camera. Its SOAP actions are a prefix, the request's name and a suffix.
struct Service {
  std::string_view nameSpace;
  std::string_view actionPrefix;
  std::string_view actionSuffix = "";
  bool hasAddressing = false;  ///< its requests carry their action in a header as well (WS-Addressing 1.0)
};

inline constexpr Service kDevice{kDeviceNamespace, "http://www.onvif.org/ver10/device/wsdl/"};
inline constexpr Service kMedia1{kMedia1Namespace, "http://www.onvif.org/ver10/media/wsdl/"};
inline constexpr Service kMedia2{kMedia2Namespace, "http://www.onvif.org/ver20/media/wsdl/"};
inline constexpr Service kDeviceIo{kDeviceIoNamespace, "http://www.onvif.org/ver10/deviceio/wsdl/"};
inline constexpr Service kEvents{kEventsNamespace, "http://www.onvif.org/ver10/events/wsdl/EventPortType/", "Request",
                                 true};

}  // namespace recorder::onvif

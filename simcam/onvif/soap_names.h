#pragma once

#include <string>

#include "simcam/config.h"

namespace simcam {

/// Declares the namespaces of a document element that is written with the usual prefixes (of SOAP, ONVIF,
/// WS-Notification and WS-Discovery), without any declaration. Usual: all at the top. Strange: each where it is used
/// first and no sooner, under another name, and some under one that is usual for another namespace. Of service: as
/// usual, but what belongs to ONVIF's schema is in the namespace of the service that answers. Undeclared: SOAP's alone.
std::string WithDeclarations(const std::string& element, Prefixes prefixes);

}  // namespace simcam

#pragma once

#include "recorder/device/asked/xml.h"

namespace recorder::onvif {

/// True when a module or rule of a profile's video analytics configuration detects motion.
bool HasMotionPart(XmlElement analytics);

/// Of GetEventProperties: true when the camera reports motion among its topics.
bool HasMotionTopic(XmlElement answer);

}  // namespace recorder::onvif

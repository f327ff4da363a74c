#include "recorder/device/asked/onvif/motion.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "recorder/device/asked/onvif/names.h"

namespace recorder::onvif {
namespace {

constexpr std::string_view kTopicsNamespace = "http://docs.oasis-open.org/wsn/t-1";

/// True when `name` is that of a module, rule or topic that is about motion.
bool IsAboutMotion(std::string_view name) {
  constexpr std::array<std::string_view, 4> kWords{"MotionDetector", "CellMotion", "MotionRegion", "MotionAlarm"};
  return std::any_of(kWords.begin(), kWords.end(),
                     [name](std::string_view word) { return name.find(word) != std::string_view::npos; });
}

bool HasMotionAmong(XmlElement configuration, std::string_view partName) {
  const std::vector<XmlElement> parts = configuration.Children(kSchemaNamespace, partName);
  return std::any_of(parts.begin(), parts.end(), [](XmlElement part) {
    return IsAboutMotion(part.Attribute("Type")) || IsAboutMotion(part.Attribute("Name"));
  });
}

bool NamesMotion(XmlElement topics) {
  const std::vector<XmlElement> children = topics.Children();
  return std::any_of(children.begin(), children.end(),
                     [](XmlElement topic) { return IsAboutMotion(topic.Name()) || NamesMotion(topic); });
}

}  // namespace

bool HasMotionPart(XmlElement analytics) {
  return HasMotionAmong(analytics.Child(kSchemaNamespace, "AnalyticsEngineConfiguration"), "AnalyticsModule") ||
         HasMotionAmong(analytics.Child(kSchemaNamespace, "RuleEngineConfiguration"), "Rule");
}

bool HasMotionTopic(XmlElement answer) { return NamesMotion(answer.Child(kTopicsNamespace, "TopicSet")); }

}  // namespace recorder::onvif

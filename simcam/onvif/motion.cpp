#include "simcam/onvif/operations.h"
#include "simcam/onvif/profiles.h"

namespace simcam {
namespace {

/// The content of a tt:Config, from its attributes on.
constexpr const char* kCellMotionModule =
    "Name=\"MyCellMotionModule\" Type=\"tt:CellMotionEngine\"><tt:Parameters><tt:SimpleItem Name=\"Sensitivity\" "
    "Value=\"50\"/></tt:Parameters>";
constexpr const char* kCellMotionRule =
    "Name=\"MyMotionDetectorRule\" Type=\"tt:CellMotionDetector\"><tt:Parameters>"
    "<tt:SimpleItem Name=\"MinCount\" Value=\"5\"/><tt:SimpleItem Name=\"AlarmOnDelay\" Value=\"100\"/>"
    "<tt:SimpleItem Name=\"AlarmOffDelay\" Value=\"100\"/><tt:SimpleItem Name=\"ActiveCells\" Value=\"0P8A8A==\"/>"
    "</tt:Parameters>";

std::string ConfigXml(const std::string& element, const char* content) {
  return "<" + element + " " + content + "</" + element + ">";
}

}  // namespace

std::string AnalyticsXml(const OnvifCamera& camera) {
  return EntityXml("Motion detection", StreamsEach(camera)) + "<tt:AnalyticsEngineConfiguration>" +
         ConfigXml("tt:AnalyticsModule", kCellMotionModule) +
         "</tt:AnalyticsEngineConfiguration><tt:RuleEngineConfiguration>" + ConfigXml("tt:Rule", kCellMotionRule) +
         "</tt:RuleEngineConfiguration>";
}

std::string motion::GetAnalyticsModules(const OnvifCamera&, const SoapRequest& request) {
  request.Need("ConfigurationToken");
  return ConfigXml("tan:AnalyticsModule", kCellMotionModule);
}

std::string motion::GetRules(const OnvifCamera&, const SoapRequest& request) {
  request.Need("ConfigurationToken");
  return ConfigXml("tan:Rule", kCellMotionRule);
}

/// Below the first one, topics have no namespace.
std::string motion::GetEventProperties(const OnvifCamera&, const SoapRequest&) {
  return "<tev:TopicNamespaceLocation>http://www.onvif.org/onvif/ver10/topics/topicns.xml</tev:TopicNamespaceLocation>"
         "<wsnt:FixedTopicSet>true</wsnt:FixedTopicSet><wstop:TopicSet><tns1:RuleEngine><CellMotionDetector>"
         "<Motion wstop:topic=\"true\"><tt:MessageDescription IsProperty=\"true\"><tt:Source>"
         "<tt:SimpleItemDescription Name=\"VideoSourceConfigurationToken\" Type=\"tt:ReferenceToken\"/>"
         "<tt:SimpleItemDescription Name=\"VideoAnalyticsConfigurationToken\" Type=\"tt:ReferenceToken\"/>"
         "<tt:SimpleItemDescription Name=\"Rule\" Type=\"xs:string\"/></tt:Source><tt:Data>"
         "<tt:SimpleItemDescription Name=\"IsMotion\" Type=\"xs:boolean\"/></tt:Data></tt:MessageDescription></Motion>"
         "</CellMotionDetector></tns1:RuleEngine></wstop:TopicSet>"
         "<wsnt:TopicExpressionDialect>http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet"
         "</wsnt:TopicExpressionDialect>"
         "<wsnt:TopicExpressionDialect>http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete"
         "</wsnt:TopicExpressionDialect>"
         "<tev:MessageContentFilterDialect>http://www.onvif.org/ver10/tev/messageContentFilter/ItemFilter"
         "</tev:MessageContentFilterDialect>"
         "<tev:MessageContentSchemaLocation>http://www.onvif.org/onvif/ver10/schema/onvif.xsd"
         "</tev:MessageContentSchemaLocation>";
}

}  // namespace simcam

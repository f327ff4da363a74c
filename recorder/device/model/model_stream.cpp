#include "recorder/device/model/model_stream.h"

#include <utility>

#include "recorder/device/model/path_template.h"
#include "recorder/utility/translate.h"

namespace recorder {
namespace {

constexpr std::pair<std::string_view, int> kNumbers[] = {{kMainStream, 0}, {kSubStream, 1}, {kThirdStream, 2}};

}  // namespace

const ModelStream* FindModelStream(const Model& model, std::string_view name, std::string_view codec) {
  const ModelStream* first = nullptr;
  const ModelStream* inAnyCodec = nullptr;
  for (const ModelStream& stream : model.streams) {
    if (stream.name != name) continue;
    if (!codec.empty() && stream.codec == codec) return &stream;
    if (first == nullptr) first = &stream;
    if (inAnyCodec == nullptr && stream.codec.empty()) inAnyCodec = &stream;
  }
  return codec.empty() || inAnyCodec == nullptr ? first : inAnyCodec;
}

std::string ChannelToAsk(const Model& model, const std::string& channel) {
  const bool isOnly = model.channels.values.size() == 1 && !model.hasOtherChannels;
  return channel.empty() || isOnly ? model.channels.preset : channel;
}

std::string StreamPath(const ModelStream& stream, std::string_view channel) {
  return FillPath(stream.from.path, {.channel = channel, .stream = Translate(kNumbers, stream.name, 0)});
}

}  // namespace recorder

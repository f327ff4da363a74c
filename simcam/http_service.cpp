#include "simcam/http_service.h"

#include "simcam/trouble.h"

namespace simcam {

HttpAnswer HttpService::Answer(const Request& request, const Entrance& entrance) {
  Count(request);
  if (auto instead = TroubleInstead(trouble_, request.target, entrance)) return *std::move(instead);
  HttpAnswer answer = AnswerWell(request, entrance);
  if (answer.status == 200 && answer.type != kJpegType) Spoil(trouble_, answer);
  return answer;
}

std::string RatesUpTo(int fastest, int factor, const char* separator) {
  std::string rates = std::to_string(fastest * factor);
  for (const int rate : {30, 25, 20, 15, 10, 5, 1}) {
    if (rate < fastest) rates += separator + std::to_string(rate * factor);
  }
  return rates;
}

}  // namespace simcam

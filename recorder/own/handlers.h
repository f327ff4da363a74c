#pragma once

#include "recorder/http/line_answer.h"
#include "recorder/http/own_request.h"

namespace recorder {

// What each address below /recorder/1/ does that is not about logins; docs/api.md tells it to clients, and
// docs/security.md who may. Of a GET the parameters are those of the query, as ParseForm has them; else those of the
// JSON in the body. A handler that contacts cameras opens its own RequestScope. What it has to tell before it is done
// goes to `lines`; once Tell() is false it returns, whatever it answers. Throws HttpError.

OwnAnswer DiscoverDevices(const OwnRequest& request, LineAnswer& lines);
OwnAnswer FindStreams(const OwnRequest& request, LineAnswer& lines);
OwnAnswer ListModels(const OwnRequest& request, LineAnswer& lines);
OwnAnswer ShowModel(const OwnRequest& request, LineAnswer& lines);
OwnAnswer MeasureStream(const OwnRequest& request, LineAnswer& lines);

}  // namespace recorder

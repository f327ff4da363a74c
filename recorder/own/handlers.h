#pragma once

#include "recorder/host/module_library.h"
#include "recorder/host/output_capture.h"
#include "recorder/http/line_answer.h"
#include "recorder/http/own_request.h"
#include "recorder/http/request_note.h"

namespace recorder {

// What each address below /recorder/1/ does that is not about logins; docs/api.md tells it to clients, and
// docs/security.md who may. Of a GET the parameters are those of the query, as ParseForm has them; else those of the
// JSON in the body, but for that of POST cameras/ID/measure, which is in the query too. A handler that contacts cameras
// opens its own RequestScope, or calls the module. Throws HttpError.

/// What a handler may use beside its request.
struct OwnTools {
  /// For what is told before all is done; once Tell() is false the handler returns, whatever it answers.
  LineAnswer& lines;
  const ModuleLibrary& module;
  OutputCapture& output;  ///< of the process, for calls of the module
  RequestNote& note;      ///< for the request's line in the log
};

OwnAnswer DiscoverDevices(const OwnRequest& request, OwnTools& tools);
OwnAnswer FindStreams(const OwnRequest& request, OwnTools& tools);
OwnAnswer ListModels(const OwnRequest& request, OwnTools& tools);
OwnAnswer ShowModel(const OwnRequest& request, OwnTools& tools);
OwnAnswer MeasureStream(const OwnRequest& request, OwnTools& tools);

OwnAnswer ListCameras(const OwnRequest& request, OwnTools& tools);
OwnAnswer AddCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer ShowCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer ChangeCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer RemoveCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer RestoreCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer ExportCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer TestCamera(const OwnRequest& request, OwnTools& tools);
OwnAnswer TakePicture(const OwnRequest& request, OwnTools& tools);
OwnAnswer MeasureCamera(const OwnRequest& request, OwnTools& tools);

OwnAnswer ListRuns(const OwnRequest& request, OwnTools& tools);
OwnAnswer OpenRun(const OwnRequest& request, OwnTools& tools);
OwnAnswer ShowRun(const OwnRequest& request, OwnTools& tools);
OwnAnswer CancelRun(const OwnRequest& request, OwnTools& tools);
OwnAnswer AddRows(const OwnRequest& request, OwnTools& tools);
OwnAnswer ListRows(const OwnRequest& request, OwnTools& tools);
OwnAnswer StartRun(const OwnRequest& request, OwnTools& tools);
OwnAnswer ListEvents(const OwnRequest& request, OwnTools& tools);
OwnAnswer ShowWebhook(const OwnRequest& request, OwnTools& tools);
OwnAnswer SetWebhook(const OwnRequest& request, OwnTools& tools);
OwnAnswer RemoveWebhook(const OwnRequest& request, OwnTools& tools);
OwnAnswer TestWebhook(const OwnRequest& request, OwnTools& tools);

}  // namespace recorder

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recorder/device/model/model.h"
#include "recorder/net/camera_address.h"
#include "recorder/utility/outcome.h"

namespace recorder {

/// What a camera says of itself. What it does not say is absent, and nothing here is bounded or checked: it is as the
/// camera sent it, in the recorder's own words for codecs ("H.264") and sizes ("1280x720").
struct CameraReport {
  std::string device;                 ///< maker, model, firmware, for people
  std::string maker;                  ///< or ""
  std::string model;                  ///< or ""
  std::string serial;                 ///< or ""
  std::vector<std::string> channels;  ///< at least one, the default one first
  std::string channel;                ///< the one of `channels` that what follows is about

  std::vector<ModelCodec> codecs;  ///< that can be chosen; at least one
  std::string codec;               ///< of the stream as it is set now, or ""
  std::optional<Choices> frameRates;
  std::optional<Choices> resolutions;
  std::optional<Choices> qualities;
  std::optional<int> streamCount;
  std::optional<unsigned int> rtspProtocols;  ///< bits 1 << RTSP_PROTOCOL

  std::optional<std::vector<std::string>> audioChannels;
  std::optional<std::vector<std::string>> motionChannels;
  std::optional<int> digitalInputs;

  ModelPath stream;                       ///< path and query of the RTSP address, and its port
  std::vector<ModelStream> otherStreams;  ///< in other codecs than `codec`, one each, all of them among `codecs`
  std::optional<OnvifMedia> media;        ///< ONVIF: of these streams
  std::optional<ModelPath> snapshot;      ///< of a JPEG over HTTP; none: pictures come from the stream alone
};

/// Asks a camera what it can do on `channel` ("": its default one). kOk: `report` is filled; else it is untouched.
/// Contacts the camera, within the deadline of the thread's RequestScope, over one connection at a time; a wrong
/// password is one login attempt. kNoService: what answers there does not have the protocol's service. Logs nothing but
/// what a user must know beside the outcome.
using AskCamera = Outcome(const CameraAddress& address, const std::string& channel, CameraReport& report);

/// How the first question of a protocol ended: where there is no such path, or something else is spoken, there is no
/// such service.
inline Outcome OfFirstQuestion(Outcome outcome) {
  const bool isElsewhere = outcome == Outcome::kNoSuchStream || outcome == Outcome::kNotThisProtocol;
  return isElsewhere ? Outcome::kNoService : outcome;
}

}  // namespace recorder

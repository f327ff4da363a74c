#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace recorder {

/// The cameras that keep their connection open behind the challenge for a login, as far as this process has met them: a
/// login there need not wait for the connection's end. Bounded; the one that was met longest ago makes room. Hosts are
/// compared as RequestScope does. Any thread.
class SteadyCameras {
 public:
  static SteadyCameras& OfProcess();

  bool Has(const std::string& host, int port) const;
  void Add(const std::string& host, int port);
  void Remove(const std::string& host, int port);

 private:
  using Place = std::pair<std::string, int>;

  void MakeRoom();

  mutable std::mutex mutex_;
  std::map<Place, std::uint64_t> metAt_;  // in meetings of all cameras
  std::uint64_t meetings_ = 0;
};

}  // namespace recorder

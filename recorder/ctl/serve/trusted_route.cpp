#include "recorder/ctl/serve/trusted_route.h"

#include <exception>
#include <system_error>
#include <utility>

#include "recorder/utility/files.h"
#include "recorder/utility/log.h"

namespace recorder {

namespace {

constexpr auto kTarget = "empty";  // the server wants a file behind the link

}  // namespace

TrustedRoute::TrustedRoute(const std::filesystem::path& folder, std::filesystem::path stateFolder)
    : link_(folder / "trusted"), stateFolder_(std::move(stateFolder)) {
  std::filesystem::create_directory(folder);
  ReplaceFile(folder / kTarget, "");
  Update();
}

void TrustedRoute::Update() try {
  SetOpen(IsAnybodyTrusted());
  failure_.clear();
} catch (const std::exception& error) {
  records_.reset();
  std::error_code ignored;
  isOpen_ = isOpen_ && !std::filesystem::remove(link_, ignored);
  if (failure_ != error.what()) LogFailure(failure_ = error.what());
}

void TrustedRoute::SetOpen(bool isTrusted) {
  if (isTrusted == isOpen_) return;
  if (isTrusted) {
    std::filesystem::create_symlink(kTarget, link_);
  } else {
    std::filesystem::remove(link_);
  }
  isOpen_ = isTrusted;
}

bool TrustedRoute::IsAnybodyTrusted() {
  if (records_ && !records_->IsCurrent()) records_.reset();
  if (!records_ && Records::AreThere(stateFolder_)) records_.emplace(stateFolder_);  // this is no place to make them
  return records_ && records_->HasKeys();
}

}  // namespace recorder

#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <string_view>

#include "recorder/host/api_call.h"
#include "recorder/host/host.h"

namespace recorder {

/// -o, the file for a picture.
void AddPictureFile(CLI::App& command, std::string& file);

/// The file that the user means by `option`, "" for none. Ask before StartHost, which changes the working folder.
std::filesystem::path PictureFile(const std::string& option);

/// Starts a host, as StartHost() does, for one call of `method`. Where the call needs a media process, that starts at
/// the same time, so that the call need not wait for it.
Host StartHostFor(std::string_view method, const std::string& configOption);

/// Makes the call, while a terminal shows that it goes on (`work` is what is waited for), and prints its answer: JSON
/// on standard output, a raw picture in `pictureFile` or, when that is empty, on standard output. Throws
/// CLI::RuntimeError with status 1 when the answer is a failure, CLI::ValidationError for a wrong parameter or a
/// picture that would go to a terminal, and std::runtime_error when there is no answer or it is but the default
/// picture; of that nothing is written.
void RunAndPrint(const ApiCall& call, const std::string& work, const std::filesystem::path& pictureFile);

}  // namespace recorder

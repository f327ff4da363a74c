#include "rig/recorder.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <libavutil/base64.h>
}

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "recorder/utility/handle.h"
#include "recorder/utility/watch_clock.h"

namespace rig {

namespace {

/// The environment may name a recorder of another build to be tested: one with a sanitizer, or for another machine.
std::filesystem::path FromEnvironment(const char* name, const char* usual) {
  const char* value = std::getenv(name);
  return value == nullptr ? usual : value;
}

const std::filesystem::path kPrograms = FromEnvironment("TEST_PROGRAMS", PROGRAM_FOLDER);
const std::filesystem::path kModule = FromEnvironment("TEST_MODULE", MODULE_FILE);
constexpr char kUser[] = "tester";
constexpr char kPassword[] = "login of the tester";

/// The variable that sets it from now on.
std::string WatchClockOf(int speed) {
  return std::string(recorder::kWatchClockVariable) + '=' + std::to_string(speed) + '@' +
         std::to_string(recorder::SecondsNow());
}

/// Whoever is not root needs a user namespace, too. In a process namespace everything ends with the first process.
const char* NamespaceFlags() { return geteuid() == 0 ? "-nmpf" : "-rnmpf"; }

}  // namespace

std::string ReadText(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

Json::Value ParseJson(const std::string& text) {
  Json::Value json;
  std::istringstream(text) >> json;
  return json;
}

std::string ToText(const Json::Value& json) { return Json::writeString(Json::StreamWriterBuilder(), json); }

Process::Process(std::vector<std::string> command, const std::filesystem::path& errorFile, const std::string& input) {
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (std::string& word : command) words.push_back(word.data());
  words.push_back(nullptr);
  const recorder::FileDescriptor inputFile(memfd_create("input", MFD_CLOEXEC));
  int ends[2];
  if (pwrite(inputFile.Get(), input.data(), input.size(), 0) < 0 || pipe2(ends, O_CLOEXEC) != 0) {
    throw std::runtime_error("no input and output");
  }
  const recorder::FileDescriptor ours(ends[0]);
  const recorder::FileDescriptor childs(ends[1]);
  id_ = fork();
  if (id_ == 0) {
    dup2(inputFile.Get(), STDIN_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    dup2(errorFile.empty() ? ends[1] : open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    execv(words[0], words.data());
    _exit(127);
  }
  output_.open("/dev/fd/" + std::to_string(ours.Get()));
}

Process::~Process() {
  if (id_ == 0) return;
  kill(id_, SIGTERM);
  Wait();
}

std::string Process::ReadLine() {
  std::string line;
  if (!std::getline(output_, line)) throw std::runtime_error("the process ended without a line");
  return line;
}

std::string Process::ReadAll() { return std::string(std::istreambuf_iterator(output_), {}); }

int Process::Wait() {
  int status = 0;
  waitpid(std::exchange(id_, 0), &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Finished Run(const std::string& program, const std::vector<std::string>& arguments, const std::string& input) {
  std::vector<std::string> command = {(kPrograms / program).string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  Process process(std::move(command), {}, input);
  const std::string output = process.ReadAll();
  return {process.Wait(), output};
}

std::vector<std::string> Words(const std::string& line) {
  std::istringstream words(line);
  return {std::istream_iterator<std::string>(words), {}};
}

bool CanRunAlone() { return Run("/usr/bin/unshare", {NamespaceFlags(), "ip", "link"}).status == 0; }

bool EnterOwnNetwork() {
  if (unshare(geteuid() == 0 ? CLONE_NEWNET : CLONE_NEWNET | CLONE_NEWUSER) != 0) return false;
  const recorder::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq loopback = {};
  std::strcpy(loopback.ifr_name, "lo");
  loopback.ifr_flags = IFF_UP | IFF_MULTICAST;
  return ioctl(socket.Get(), SIOCSIFFLAGS, &loopback) == 0;
}

Finished RunAlone(const TempFolder& folder, const std::vector<std::string>& arguments, const std::string& input) {
  constexpr char kScript[] = R"(
    ip link set lo up multicast on
    ip address add 192.0.2.1/24 dev lo
    ip route add 224.0.0.0/4 dev lo
    for file in $(find . -name '*.conf'); do mount --bind $file /etc/$file; done
    rm -f started
    "$0/simcam" cameras.json > started &
    while [ ! -s started ]; do sleep 0.02; done
    exec timeout 5 "$0/recorderctl" "$@")";
  std::vector<std::string> command = {"-C", folder.Path(), "unshare", NamespaceFlags(), "sh",
                                      "-e", "-c",          kScript,   PROGRAM_FOLDER};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Run("/usr/bin/env", command, input);
}

SimCameras::SimCameras(const Json::Value& cameras) {
  Json::Value config;
  config["cameras"] = cameras;
  const std::filesystem::path file = folder_.Write("cameras.json", ToText(config));
  process_ = std::make_unique<Process>(std::vector<std::string>{PROGRAM_FOLDER "/simcam", file.string()},
                                       folder_.Path() / "log");
  const Json::Value started = ParseJson(FirstLine());
  for (const Json::Value& camera : started["cameras"]) {
    ports_[camera["name"].asString()] = camera["port"].asInt();
  }
  for (const Json::Value& camera : cameras) {
    addresses_[camera["name"].asString()] = camera.get("address", kLoopback).asString();
  }
}

std::string SimCameras::FirstLine() const {
  try {
    return process_->ReadLine();
  } catch (const std::exception&) {
    throw std::runtime_error("simcam did not start: " + ReadText(folder_.Path() / "log"));
  }
}

Json::Value SimCameras::Ask(const std::string& name, const std::string& path) const {
  return ParseJson(HttpClient(Port(name), addresses_.at(name)).Ask(HttpRequest("GET", path, {})).body);
}

int ErrorCode(const Json::Value& answer) {
  if (!answer.isMember("success")) return -1;
  return answer["success"].asBool() ? 0 : answer["error"]["code"].asInt();
}

Answer::Answer(Reply reply) : Reply(std::move(reply)), cause(HeaderOf(head, "Recorder-Cause")) {
  if (contentType == "application/json") json = ParseJson(body);
}

Headers LoginOf(const std::string& user, const std::string& password) {
  const std::string text = user + ":" + password;
  std::string coded(AV_BASE64_SIZE(text.size()), '\0');
  av_base64_encode(coded.data(), static_cast<int>(coded.size()), reinterpret_cast<const std::uint8_t*>(text.data()),
                   static_cast<int>(text.size()));
  coded.pop_back();  // the NUL
  return {{"Authorization", "Basic " + coded}};
}

TestRecorder::TestRecorder() : TestRecorder(Options{}) {}

TestRecorder::TestRecorder(const Options& options) {
  Json::Value config;
  config["stateFolder"] = "state";
  config["modelsFolder"] = options.modelsFolder.string();
  if (!options.pageFolder.empty()) config["pageFolder"] = options.pageFolder;
  config["module"] = kModule.string();
  config["workFolder"] = SOURCE_FOLDER "/models";
  config["log"] = options.log;
  config["logins"]["hashMemoryMiB"] = options.hashMemoryMiB;
  config["logins"]["hashPasses"] = options.hashPasses;
  config["limits"]["testMs"] = options.testMs;
  config["limits"]["pictureMs"] = options.pictureMs;
  if (options.watchSeconds > 0) config["watch"]["interval"] = options.watchSeconds;
  for (const std::string& range : options.allow) config["addressPolicy"]["allow"].append(range);
  for (const std::string& range : options.deny) config["addressPolicy"]["deny"].append(range);
  for (const std::string& proxy : options.proxies) config["logins"]["proxies"].append(proxy);
  folder_.Write("recorder.json", ToText(config));
  options.prepare(*this);

  // A proxy that does not exist would take part in every request to a camera, if any were asked.
  std::vector<std::string> command = {"/usr/bin/env",
                                      "all_proxy=socks5://127.0.0.1:9",
                                      WatchClockOf(options.watchSpeed),
                                      (kPrograms / "recorderctl").string(),
                                      "--config",
                                      ConfigFile().string(),
                                      "serve",
                                      "--workers",
                                      std::to_string(options.workers)};
  if (options.watchSeconds == 0) command.emplace_back("--no-watch");
  command.insert(command.end(), options.serveArguments.begin(), options.serveArguments.end());
  server_ = std::make_unique<Process>(std::move(command), folder_.Path() / "log");
  const std::string address = server_->ReadLine();  // http://127.0.0.1:PORT/
  port_ = std::stoi(address.substr(address.rfind(':') + 1));
}

void TestRecorder::AddTester() const {
  const Finished user = Control({"user", "add", kUser}, std::string(kPassword) + '\n');
  if (user.status != 0) throw std::runtime_error(user.output);
}

Headers TestRecorder::Login() const { return LoginOf(kUser, kPassword); }

Answer TestRecorder::Post(const std::string& method, const Json::Value& params) const {
  return Send("POST", kApi + method, Login(), ToText(params));
}

Answer TestRecorder::Get(const std::string& method, const std::string& query) const {
  return Send("GET", kApi + method + (query.empty() ? "" : "?" + query), Login());
}

Reply TestRecorder::Ask(const std::string& verb, const std::string& path, const Headers& headers,
                        const std::string& body) const {
  return HttpClient(port_).Ask(HttpRequest(verb, path, headers, body));
}

Finished TestRecorder::Control(const std::vector<std::string>& arguments, const std::string& input) const {
  std::vector<std::string> all = {"--config", ConfigFile()};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return Run("recorderctl", all, input);
}

std::string TestRecorder::Trust(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"trust", "add"});
  const Finished added = Control(arguments);
  if (added.status != 0) throw std::runtime_error(added.output);
  const auto isThere = [&] {
    return Send("POST", kTrusted + std::string("CamCap"), {{"Cookie", "timestamp=0"}}, "{}").status != 404;
  };
  for (int tries = 0; tries < 1000 && !isThere(); ++tries) usleep(10'000);
  return added.output;
}

/// The command prints the lines "cookie ..." and "timestamp ...".
TestRecorder::Pair TestRecorder::MakePair(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"trust", "pair"});
  std::string label;
  Pair pair;
  std::istringstream output(Control(arguments).output);
  if (!(output >> label >> pair.cookie >> label >> pair.timestamp)) throw std::runtime_error(output.str());
  return pair;
}

int TestRecorder::AddCamera(const std::string& vendor, const std::string& model, int port, const std::string& user,
                            const std::string& password, const std::string& channel, const std::string& path) const {
  const Finished added =
      Control({"camera", "add", "--name", "stored", "--vendor", vendor, "--model", model, "--host", "127.0.0.1",
               "--port", std::to_string(port), "--user", user, "--channel", channel, "--source-path", path},
              password + "\n");
  if (added.status != 0) throw std::runtime_error(added.output);
  return std::stoi(added.output.substr(added.output.find_first_of("0123456789")));
}

std::string DecodeBase64(const std::string& text) {
  std::string bytes(text.size(), '\0');
  const int size =
      av_base64_decode(reinterpret_cast<std::uint8_t*>(bytes.data()), text.c_str(), static_cast<int>(bytes.size()));
  return bytes.substr(0, static_cast<std::size_t>(std::max(size, 0)));
}

}  // namespace rig

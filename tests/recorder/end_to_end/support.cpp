#include "tests/recorder/end_to_end/support.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace end_to_end {

namespace {

/// The environment may name a recorder of another build to be tested: one with a sanitizer, or for another machine.
std::filesystem::path FromEnvironment(const char* name, const char* usual) {
  const char* value = std::getenv(name);
  return value == nullptr ? usual : value;
}

const std::filesystem::path kPrograms = FromEnvironment("TEST_PROGRAMS", PROGRAM_FOLDER);
const std::filesystem::path kModule = FromEnvironment("TEST_MODULE", MODULE_FILE);
const std::filesystem::path kSource = SOURCE_FOLDER;
constexpr char kUser[] = "tester";
constexpr char kPassword[] = "login of the tester";
constexpr char kApi[] = "/api/NORV.Vistrel.CameraCap/1/";

std::vector<char*> Pointers(std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::string ReadAll(int descriptor) {
  std::string text;
  char buffer[4096];
  for (ssize_t count = 0; (count = read(descriptor, buffer, sizeof(buffer))) > 0;) {
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

Answer ToAnswer(const httplib::Result& result) {
  if (!result) throw std::runtime_error("no answer: " + httplib::to_string(result.error()));
  Answer answer{result->status, {}, result->body, result->get_header_value("Content-Type")};
  if (answer.contentType == "application/json") answer.json = ParseJson(answer.body);
  return answer;
}

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

Process::Process(std::vector<std::string> command, const std::filesystem::path& errorFile) {
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  id_ = fork();
  if (id_ == 0) {
    dup2(pipeEnds[1], STDOUT_FILENO);
    dup2(open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
    execv(command[0].c_str(), Pointers(command).data());
    _exit(127);
  }
  close(pipeEnds[1]);
  output_ = pipeEnds[0];
}

Process::~Process() {
  kill(id_, SIGTERM);
  waitpid(id_, nullptr, 0);
  close(output_);
}

std::string Process::ReadLine() {
  std::string line;
  for (char letter = 0; read(output_, &letter, 1) == 1;) {
    if (letter == '\n') return line;
    line += letter;
  }
  throw std::runtime_error("the process ended without a line");
}

Finished Run(const std::string& program, const std::vector<std::string>& arguments, const std::string& input,
             const std::filesystem::path& configFile) {
  int in[2];
  int out[2];
  if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  std::vector<std::string> command = {(kPrograms / program).string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  const pid_t id = fork();
  if (id == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    dup2(out[1], STDERR_FILENO);
    if (!configFile.empty()) setenv("RECORDER_CONFIG", configFile.c_str(), 1);
    execv(command[0].c_str(), Pointers(command).data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  if (write(in[1], input.data(), input.size()) < 0) throw std::runtime_error("the program reads no input");
  close(in[1]);
  Finished finished;
  finished.output = ReadAll(out[0]);
  close(out[0]);
  int status = 0;
  waitpid(id, &status, 0);
  finished.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return finished;
}

SimCameras::SimCameras(const Json::Value& cameras) {
  Json::Value config;
  config["cameras"] = cameras;
  const std::filesystem::path file = folder_.Write("cameras.json", ToText(config));
  process_ = std::make_unique<Process>(std::vector<std::string>{PROGRAM_FOLDER "/simcam", file.string()},
                                       folder_.Path() / "log");
  const Json::Value started = ParseJson(process_->ReadLine());
  for (const Json::Value& camera : started["cameras"]) {
    ports_[camera["name"].asString()] = camera["port"].asInt();
  }
}

Json::Value SimCameras::Log(const std::string& name) const { return Log(Port(name)); }

Json::Value SimCameras::Log(int port) const {
  httplib::Client client("127.0.0.1", port);
  return ParseJson(client.Get("/sim/log")->body);
}

int Answer::Code() const {
  if (!json.isMember("success")) return -1;
  return json["success"].asBool() ? 0 : json["error"]["code"].asInt();
}

TestRecorder::TestRecorder() : TestRecorder(Options{}) {}

TestRecorder::TestRecorder(const Options& options) {
  Json::Value config;
  config["stateFolder"] = "state";
  config["modelsFolder"] = (options.modelsFolder.empty() ? kSource / "models" : options.modelsFolder).string();
  config["module"] = kModule.string();
  config["workFolder"] = (kSource / "models").string();
  config["limits"]["testMs"] = options.testMs;
  config["limits"]["pictureMs"] = options.pictureMs;
  for (const std::string& range : options.allow) config["addressPolicy"]["allow"].append(range);
  for (const std::string& range : options.deny) config["addressPolicy"]["deny"].append(range);
  configFile_ = folder_.Write("recorder.json", ToText(config));
  const Finished user = Control({"user", "add", kUser}, std::string(kPassword) + "\n");
  if (user.status != 0) throw std::runtime_error(user.output);

  std::vector<std::string> command = {
      (kPrograms / "recorderctl").string(), "--config", configFile_.string(), "serve", "--workers",
      std::to_string(options.workers)};
  command.insert(command.end(), options.serveArguments.begin(), options.serveArguments.end());
  server_ = std::make_unique<Process>(std::move(command), folder_.Path() / "log");
  const std::string address = server_->ReadLine();  // http://127.0.0.1:PORT/
  port_ = std::stoi(address.substr(address.rfind(':') + 1));
}

httplib::Headers TestRecorder::Login() const { return {httplib::make_basic_authentication_header(kUser, kPassword)}; }

Answer TestRecorder::Post(const std::string& method, const Json::Value& params) const {
  return Send("POST", kApi + method, Login(), ToText(params));
}

Answer TestRecorder::Get(const std::string& method, const std::string& query) const {
  return Send("GET", kApi + method + (query.empty() ? "" : "?" + query), Login());
}

Answer TestRecorder::Send(const std::string& verb, const std::string& path, const httplib::Headers& headers,
                          const std::string& body, const std::string& contentType) const {
  httplib::Client client("127.0.0.1", port_);
  client.set_read_timeout(60);
  httplib::Request request;
  request.method = verb;
  request.path = path;
  request.headers = headers;
  request.body = body;
  if (!body.empty()) request.set_header("Content-Type", contentType);
  return ToAnswer(client.send(request));
}

Finished TestRecorder::Control(const std::vector<std::string>& arguments, const std::string& input) const {
  return Run("recorderctl", arguments, input, configFile_);
}

int TestRecorder::AddCamera(const std::string& vendor, const std::string& model, int port, const std::string& user,
                            const std::string& password, const std::string& channel) const {
  const Finished added = Control({"camera", "add", "--name", "stored", "--vendor", vendor, "--model", model, "--host",
                                  "127.0.0.1", "--port", std::to_string(port), "--user", user, "--channel", channel},
                                 password + "\n");
  if (added.status != 0) throw std::runtime_error(added.output);
  return std::stoi(added.output.substr(added.output.find_first_of("0123456789")));
}

std::string DecodeBase64(const std::string& text) {
  std::string bytes;
  unsigned int bits = 0;
  int count = 0;
  for (const char letter : text) {
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t value = kAlphabet.find(letter);
    if (value == std::string::npos) break;
    bits = bits << 6U | static_cast<unsigned int>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes += static_cast<char>(bits >> static_cast<unsigned int>(count) & 0xFFU);
    }
  }
  return bytes;
}

}  // namespace end_to_end

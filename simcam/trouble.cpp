#include "simcam/trouble.h"

#include <chrono>
#include <string>
#include <thread>

namespace simcam {
namespace {

/// Ten to the ninth characters for a reader that expands entities without a limit.
std::string EntityDeclarations() {
  std::string declarations = "<!DOCTYPE answer [<!ENTITY e0 \"-\">";
  for (int i = 1; i <= 9; ++i) {
    const std::string former = "&e" + std::to_string(i - 1) + ";";
    declarations += "<!ENTITY e" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j) declarations += former;
    declarations += "\">";
  }
  return declarations + "]>";
}

/// A document type after the XML declaration, and its largest entity at the end of the document element.
std::string WithEntities(std::string xml) {
  xml.insert(xml.rfind("</"), "&e9;");
  return xml.insert(xml.find("?>") + 2, EntityDeclarations());
}

constexpr std::size_t kAmpersands = 4'100'000;

/// At the end of the document element.
void Append(std::string& xml, const std::string& stuff) { xml.insert(xml.rfind("</"), stuff); }

/// Nearly 1 MiB of small elements, with text between them.
std::string SmallElements() {
  constexpr int kCount = 24'000;
  std::string elements;
  for (int i = 0; i < kCount; ++i) elements += "<e/>text of thirty-eight characters here.";
  return elements;
}

}  // namespace

std::optional<HttpAnswer> TroubleInstead(Trouble trouble, const std::string& target, const Entrance& entrance) {
  switch (trouble) {
    case Trouble::kHtmlPage:
      return HttpAnswer{200, "text/html", "<html><body>Please log in</body></html>\n"};
    case Trouble::kNoService:
      return HttpAnswer{404, "text/plain", "no such page\n"};
    case Trouble::kRedirectTls:
      if (entrance.overTls) return std::nullopt;
      return HttpAnswer{302, "text/plain", "",
                        "Location: https://127.0.0.1:" + std::to_string(entrance.port) + target + "\r\n"};
    case Trouble::kSlow:
      std::this_thread::sleep_for(std::chrono::seconds(1));
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void Spoil(Trouble trouble, HttpAnswer& answer) {
  switch (trouble) {
    case Trouble::kBrokenXml:
      answer.body.resize(answer.body.size() / 2);
      return;
    case Trouble::kEntities:
      answer.body = WithEntities(answer.body);
      return;
    case Trouble::kAmpersands:
      return Append(answer.body, std::string(kAmpersands, '&'));
    case Trouble::kElements:
      return Append(answer.body, SmallElements());
    case Trouble::kEndless:
      answer.sending = HttpAnswer::Body::kEndless;
      return;
    case Trouble::kHuge:
      answer.sending = HttpAnswer::Body::kHuge;
      return;
    default:
      return;
  }
}

}  // namespace simcam

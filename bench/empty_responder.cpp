// bench_empty_responder: a FastCGI responder that answers every request with the same text, the whole CGI answer that
// stands in the file that BENCH_ANSWER names.

#define NO_FCGI_DEFINES
#include <fcgiapp.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

int main() {
  const char* file = std::getenv("BENCH_ANSWER");
  if (file == nullptr) return 1;
  std::ifstream stream(file, std::ios::binary);
  const std::string answer(std::istreambuf_iterator<char>(stream), {});
  FCGX_Request request;
  if (FCGX_Init() != 0 || FCGX_InitRequest(&request, 0, 0) != 0) return 1;
  while (FCGX_Accept_r(&request) == 0) {
    FCGX_PutStr(answer.data(), static_cast<int>(answer.size()), request.out);
    FCGX_Finish_r(&request);
  }
}

// Answers a request over FastCGI with all that it was handed, so that a test sees what workers get to know.

#define NO_FCGI_DEFINES
#include <fcgiapp.h>

int main() {
  FCGX_Request request;
  if (FCGX_Init() != 0 || FCGX_InitRequest(&request, 0, 0) != 0) return 1;
  while (FCGX_Accept_r(&request) == 0) {
    FCGX_PutS("Content-Type: text/plain\r\n\r\n", request.out);
    for (char** variable = request.envp; *variable != nullptr; ++variable) {
      FCGX_PutS(*variable, request.out);
      FCGX_PutChar('\n', request.out);
    }
    FCGX_Finish_r(&request);
  }
  return 0;
}

#include <clocale>

#include "driver/run.h"
#include "platform/process.h"

int main(int argc, char* argv[]) {
  orx::prepareProcess();
  (void)std::setlocale(LC_CTYPE, "");  // texts come in the code page of the operator's terminal
  return orx::run(argc, argv);
}

#include "cli/program.h"

int main(int argumentCount, char** arguments) {
  return orvane::cli::runProgram(argumentCount, arguments);
}

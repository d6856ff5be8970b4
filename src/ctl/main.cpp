#include <cstdio>
#include <string>
#include <vector>

#include "ctl/Commands.h"
#include "ctl/Output.h"
#include "ctl/Program.h"
#include "platform/ProcessSetup.h"

int main(int argc, char* argv[]) {
  installer::setUpAnsweringProcess();
  installer::ctl::Output out(stdout);
  return installer::ctl::runProgram(std::vector<std::string>(argv, argv + argc),
                                    installer::ctl::commands(), out);
}

// SPDX-License-Identifier: MIT
// The kx executable: the process's standard streams around one run.
#include "Tool.h"

int main(int argc, char** argv) {
  kx::THandleStream In(kxtool::StdHandle(0)), Out(kxtool::StdHandle(1)), Err(kxtool::StdHandle(2));
  kxtool::TToolIO IO;
  IO.In = &In;
  IO.Out = &Out;
  IO.Err = &Err;
  IO.ErrIsTerminal = kxtool::StdErrIsTerminal();
  return kxtool::Run(std::vector<std::string>(argv + 1, argv + argc), IO);
}

// kestrona-palette: draws the palette sheet; see PaletteCommandLine.h.
#include <iostream>
#include <string>
#include <vector>

#include "apps/kestrona-palette/PaletteCommandLine.h"

int main(int argc, char** argv) {
  return kestrona::palette::runPaletteCommandLine(std::vector<std::string>(argv + 1, argv + argc), std::cout,
                                                  std::cerr);
}

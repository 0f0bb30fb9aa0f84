// The command line of kestrona-palette, which draws the palette sheet.
//
//   kestrona-palette --out DIR [--scale N]
//   kestrona-palette -h | --help
//
// runPaletteCommandLine() writes DIR/palette.png (at N pixels per point,
// above 0 and at most 8, default 2), DIR/palette.svg and DIR/index.html,
// which shows both, making DIR when it is missing, and prints the page's
// path. Options are written "--name value" or "--name=value", each once.
// "-h" or "--help" prints the usage to the output. Exit status: 0 done (or
// help); 1 a folder or file could not be made or written, with the path and
// the operating system's reason; 2 a wrong command line, with the reason
// and a hint to the help on the error stream.
//
// Runs on the calling thread.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace kestrona::palette {

// arguments excludes the program's name.
int runPaletteCommandLine(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors);

}  // namespace kestrona::palette

// Snapshots of laid-out trees: what a tree draws and where a press on it
// goes, as a small text stored under tests/data/ViewSnapshots/, so that a
// widget's layout is checked whole rather than re-derived by hand.
//
// One line per node that paints or takes a press, in drawing order:
//   fill <shape> <frame> <colour>
//   text "<string>" <frame> <family> <size> <weight> <colour> [lines N] [truncated]
//   image <symbol> <frame> <colour>
//   press "<intent title>" <frame>
//   link <url> <frame>            (widget-link for the widget's own)
// followed by what the ancestors do to it: "scale F" (scale effects),
// "opacity F" (opacity layers) and "clip <shape>" (the nearest clip).
// Frames are "x,y wxh" in points and colours "#rrggbbaa", both rounded, so
// a snapshot does not move with the last bits of a computation. A live
// timer's text is marked "(live)".
//
// expectSnapshot() compares a tree with its stored snapshot (gtest shows
// the lines that differ). Run the tests with KESTRONA_UPDATE_SNAPSHOTS=1
// to write the snapshots anew from the trees, then read the change in the
// diff before committing it.
#pragma once

#include <string>

#include "Platform/View/Layout.h"

namespace kestrona::testing {

std::string layoutSnapshot(const LayoutTree& tree);

// A frame as a snapshot writes it: "x,y wxh", to a hundredth of a point.
std::string frameText(const Rect& frame);

void expectSnapshot(const LayoutTree& tree, const std::string& name);

}  // namespace kestrona::testing

// The few named system colours of the domain layer.
//
// Each is a dynamic device RGB colour with a light and a dark value, chosen
// to match a desktop's usual light and dark window schemes:
//
//   name                        light                 dark
//   systemBackground            #ECECEC               #323232   window background
//   secondarySystemBackground   #E3E3E3               #282828   area behind pages
//   tertiarySystemBackground    #FFFFFF               #1E1E1E   control background
//   label                       #000000 at 0.85       #FFFFFF at 0.85
//   secondaryLabel              #000000 at 0.5        #FFFFFF at 0.55
//   separator                   #000000 at 0.1        #FFFFFF at 0.1
//
// A colour resolves to its dark value in an appearance whose best match
// among dark and light is dark, and to its light value otherwise; each is
// named after its member ("systemBackground"). Each is made once, on first
// use, from any thread.
#pragma once

#include "Platform/Color/Color.h"

namespace kestrona {

struct NamedColors {
  static const Color& systemBackground();
  static const Color& secondarySystemBackground();
  static const Color& tertiarySystemBackground();
  static const Color& label();
  static const Color& secondaryLabel();
  static const Color& separator();
};

}  // namespace kestrona

// Where a piece of a time entry, cut at day boundaries for a list, has the
// rest of the entry: before it, after it, on both sides, or nowhere. The
// session list gives the cases their meaning. A plain enumeration.
#pragma once

namespace kestrona {

enum class SessionEdge { before, after, beforeAndAfter, none };

}  // namespace kestrona

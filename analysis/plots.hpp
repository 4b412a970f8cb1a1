// The plots of pages 2 to 5, as the menu dispatch calls them. Each reads
// the open run files of the session, draws on the selected device and
// leaves its files rewound.
#pragma once

#include "core/session.hpp"

namespace viewer {

// Page 2.
void pgex201(Session& s, int NSCAN, int NPHASE);
void pgex202(Session& s, int NSCAN, int NPHASE);
void pgex203(Session& s, int NSCAN, int NPHASE);
void pgex204(Session& s, int NSCAN, int NPHASE);
void pgex205(Session& s, int N);
void pgex206(Session& s, int N);
void pgex207(Session& s, int N);
void pgex209(Session& s, int N);
void pgex210(Session& s, int N);
void pgex211(Session& s, int N);
void pgex212(Session& s, int N);
void pgex215(Session& s, int N);
// Page 3.
void pgex301(Session& s, int N);
void pgex331(Session& s, int N, int N_BINS);
// Page 4.
void pgex401(Session& s, int N);
void pgex404(Session& s, int N);
void pgex406(Session& s, int N);
void pgex407(Session& s, int N);
void pgex408(Session& s, int N);
void pgex409(Session& s, int N);
void pgex411(Session& s, int N);
void pgex414(Session& s);
void pgex415(Session& s);
void pgex416(Session& s);
// Page 5.
void pgex501(Session& s, int N, int SELECTION);

}  // namespace viewer

// Every plot of the viewer, as the menu dispatch calls it. Each reads the
// open run files of the session, draws on the selected device and leaves
// its files rewound.
#pragma once

#include "control/session.hpp"

namespace viewer {

// Beam plots along z.
void pgex1(Session& s, int N);
void pgex2(Session& s, int N);
void pgex3(Session& s, int N);
void pgex4(Session& s, int N);
void pgex5(Session& s, int N);
void pgex6(Session& s, int N);
void pgex7(Session& s, int N);
void pgex8(Session& s, int N);
void pgex9(Session& s, int N);
// Reference particle.
void pgex10(Session& s, int N);
void pgex11(Session& s, int N);
void pgex12(Session& s, int N);
void pgex13(Session& s, int N);
// Probe tracks and fields.
void pgex14(Session& s);
void pgex15(Session& s);
void pgex16(Session& s);
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

// The plots along z (page 1), as the menu dispatch calls them. Each reads
// the open run files of the session, draws on the selected device and
// leaves its files rewound.
#pragma once

#include "core/session.hpp"

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

}  // namespace viewer

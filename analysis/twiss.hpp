// Twiss functions, phase advance and coherence length, derived from the rms
// beam data of the three emittance tables: plain values over the steps of
// the beam line, which the plots only draw.
//
//   float GAMBET = 0;  // kept by the caller from call to call
//   TwoCurves beta = twiss_functions(steps, TwissFunction::beta, GAMBET);
#pragma once

#include <span>
#include <vector>

namespace viewer {

// One step of the three emittance tables read in lock step.
struct BeamStep {
    float Z_MEAN = 0;   // m
    float X_RMS = 0;    // mm
    float NX_EMIT = 0;  // pi mrad mm, normalised
    float CO_XPX = 0;   // x-x' correlation
    float Y_RMS = 0;    // mm
    float NY_EMIT = 0;  // pi mrad mm, normalised
    float CO_YPY = 0;   // y-y' correlation
    float E_MEAN = 0;   // MeV, kinetic
};

// A step whose emittance is positive but below this counts as no beam.
constexpr float kSmallestEmittance = 1e-30f;  // pi mrad mm

enum class TwissFunction {
    beta,           // m
    alpha,          // 1
    phase_advance,  // deg, integrated in radian
};

// Two curves, horizontal and vertical, over the positions of the steps.
struct TwoCurves {
    std::vector<float> Z;     // m
    std::vector<float> X, Y;  // in the unit of the quantity
};

// Beta, alpha or phase advance in both planes. Beta is the rms size squared
// over the geometric emittance, beta * gamma from the latest positive energy
// (`GAMBET`, carried in and out); a plane without a positive emittance has
// beta 0. The phase advance integrates 1/beta by the trapezoid rule from 0
// at the first step; a step without a positive beta adds nothing and keeps
// the last 1/beta.
TwoCurves twiss_functions(std::span<const BeamStep> steps, TwissFunction f, float& GAMBET);

// Transverse coherence length, nm: 0.38 times the rms size over the
// emittance in each plane.
TwoCurves coherence_lengths(std::span<const BeamStep> steps);

}  // namespace viewer

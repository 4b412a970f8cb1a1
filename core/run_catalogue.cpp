// The rows of the run-file catalogue and the reading of one record by kind.
#include "core/run_catalogue.hpp"

#include <stdexcept>

#include "core/session.hpp"

namespace viewer {
namespace {

// Units: positions m, sizes mm, divergences mrad, transverse emittances
// pi mrad mm, energies MeV, energy spreads keV, longitudinal emittances
// pi keV mm, momentum MeV/c, time ns, fields V/m.
constexpr Field kXemit[] = {{"Z_MEAN", "m"},    {"CLOCK", "ns"},           {"X_MEAN", "mm"},  {"X_RMS", "mm"},
                            {"XP_RMS", "mrad"}, {"NX_EMIT", "pi mrad mm"}, {"CO_XPX", "mrad"}};
constexpr Field kYemit[] = {{"Z_MEAN", "m"},    {"CLOCK", "ns"},           {"Y_MEAN", "mm"},  {"Y_RMS", "mm"},
                            {"YP_RMS", "mrad"}, {"NY_EMIT", "pi mrad mm"}, {"CO_YPY", "mrad"}};
constexpr Field kZemit[] = {{"Z_MEAN", "m"},  {"CLOCK", "ns"},          {"E_MEAN", "MeV"}, {"Z_RMS", "mm"},
                            {"E_RMS", "keV"}, {"NZ_EMIT", "pi keV mm"}, {"CO_EZ", "keV"}};
constexpr Field kXemit2[] = {{"Z_MEAN", "m"},           {"C3XZ", "m rad"}, {"C4XZ", "m rad"},
                             {"REMITZX", "pi mrad mm"}, {"C3XE", "m rad"}, {"C4XE", "m rad"},
                             {"REMITEX", "pi mrad mm"}};
constexpr Field kYemit2[] = {{"Z_MEAN", "m"},           {"C3YZ", "m rad"}, {"C4YZ", "m rad"},
                             {"REMITZY", "pi mrad mm"}, {"C3YE", "m rad"}, {"C4YE", "m rad"},
                             {"REMITEY", "pi mrad mm"}};
constexpr Field kZemit2[] = {
    {"Z_MEAN", "m"},          {"C1", ""}, {"C2Z", ""}, {"C3Z2", ""}, {"REMITEZ2", "pi keV mm"}, {"C4Z3", ""},
    {"REMITEZ3", "pi keV mm"}};
constexpr Field kRef[] = {{"Z_MEAN", "m"},   {"CLOCK", "ns"}, {"ENE", "MeV/c"}, {"GRAD", "MeV/c/m"},
                          {"LARMOR", "rad"}, {"XX", "mm"},    {"YY", "mm"}};
constexpr Field kTcheck[] = {{"ZMEAN", "m"}, {"CLOCK", "ns"}, {"NR_R", ""},   {"NR_Z", ""},
                             {"NR_GAM", ""}, {"NZ_R", ""},    {"NZ_GAM", ""}, {"S_COUNT", "", 'i'}};
constexpr Field kTrack[] = {{"I", "", 'i'}, {"STAT", "", 'i'}, {"Z", "m"},    {"X", "mm"},
                            {"Y", "mm"},    {"EZ", "V/m"},     {"ER", "V/m"}, {"BFI", "V/m"}};
constexpr Field kScan[] = {{"Z", ""},      {"ZPOS", "m"},  {"DAT(1)", ""}, {"DAT(2)", ""},
                           {"DAT(3)", ""}, {"DAT(4)", ""}, {"DAT(5)", ""}, {"DAT(6)", ""},
                           {"DAT(7)", ""}, {"DAT(8)", ""}, {"DAT(9)", ""}, {"DAT(10)", ""}};
constexpr Field kError[] = {{"D(1)", ""}, {"D(2)", "m"}, {"D(3)", ""},  {"D(4)", ""},
                            {"D(5)", ""}, {"D(6)", ""},  {"D(7)", ""},  {"D(8)", ""},
                            {"D(9)", ""}, {"D(10)", ""}, {"D(11)", ""}, {"D(12)", ""}};
constexpr Field kLandF[] = {{"Z_MEAN", "m"},        {"NUM_PART", ""}, {"Q", ""},
                            {"PART_LOSS", "count"}, {"ENE_DEP", "J"}, {"BEAM_LOAD", "J"}};
constexpr Field kSubEmit[] = {{"Z_MEAN", "m"},
                              {"CLOCK", ""},
                              {"SUB_XRM", "mm"},
                              {"SUB_YRM", "mm"},
                              {"CR_EMITX", "pi mrad mm"},
                              {"CR_EMITY", "pi mrad mm"},
                              {"SUMQ", ""},
                              {"SUMQ_CR", ""}};
constexpr Field kPScan[] = {{"PHASE", "deg"}, {"E_MEAN", "MeV"}, {"COMPRESS", ""}, {"BET_RAT", ""}};
constexpr Field kTRemit[] = {
    {"Z_MEAN", "m"}, {"CLOCK", ""}, {"TR_EMITX", "pi mrad mm"}, {"TR_EMITY", "pi mrad mm"}, {"TR_EMITZ", ""}};
constexpr Field kCemit[] = {{"Z_MEAN", "m"},         {"CEMITX", "pi mrad mm"}, {"CX_95", "pi mrad mm"},
                            {"CX_90", "pi mrad mm"}, {"CX_80", "pi mrad mm"},  {"CEMITY", "pi mrad mm"},
                            {"CY_95", "pi mrad mm"}, {"CY_90", "pi mrad mm"},  {"CY_80", "pi mrad mm"},
                            {"CEMITZ", "pi keV mm"}, {"CZ_95", "pi keV mm"},   {"CZ_90", "pi keV mm"},
                            {"CZ_80", "pi keV mm"}};
constexpr Field kCathode[] = {{"Z_MEAN", "m"}, {"CLOCK", "ns"}, {"EZ", "V/m"},  {"EACC", "V/m"},
                              {"QEMIT", "nC"}, {"GZ_MIN", "m"}, {"GZ_MAX", "m"}};
constexpr Field kSigma[] = {
    {"Z_MEAN", "m", 'd'},  {"E_MEAN", "", 'd'},   {"SIG(1,1)", "", 'd'}, {"SIG(1,2)", "", 'd'},
    {"SIG(1,3)", "", 'd'}, {"SIG(1,4)", "", 'd'}, {"SIG(1,5)", "", 'd'}, {"SIG(1,6)", "", 'd'},
    {"SIG(2,2)", "", 'd'}, {"SIG(2,3)", "", 'd'}, {"SIG(2,4)", "", 'd'}, {"SIG(2,5)", "", 'd'},
    {"SIG(2,6)", "", 'd'}, {"SIG(3,3)", "", 'd'}, {"SIG(3,4)", "", 'd'}, {"SIG(3,5)", "", 'd'},
    {"SIG(3,6)", "", 'd'}, {"SIG(4,4)", "", 'd'}, {"SIG(4,5)", "", 'd'}, {"SIG(4,6)", "", 'd'},
    {"SIG(5,5)", "", 'd'}, {"SIG(5,6)", "", 'd'}, {"SIG(6,6)", "", 'd'}};

using F = RecordForm;
using D = DataRole;
using X = Fexist;

// Two units hold one of two kinds: .C99emit takes unit 23 over from .Cemit,
// .Sub_emit takes unit 19 over from .Cr_emit (the run load decides).
const RunKind kCatalogue[] = {
    {Kind::Xemit, ".Xemit", 10, &X::Xemit_EXISTS, nullptr, F::fixed, false, D::pair, kXemit,
     "horizontal beam data along z"},
    {Kind::Yemit, ".Yemit", 11, &X::Yemit_EXISTS, nullptr, F::fixed, false, D::pair, kYemit,
     "vertical beam data along z"},
    {Kind::Xemit2, ".Xemit2", 24, &X::Xemit2_EXISTS, nullptr, F::fixed, false, D::none, kXemit2,
     "horizontal correlation data"},
    {Kind::Yemit2, ".Yemit2", 25, &X::Yemit2_EXISTS, nullptr, F::fixed, false, D::none, kYemit2,
     "vertical correlation data"},
    {Kind::Zemit2, ".Zemit2", 35, &X::Zemit2_EXISTS, nullptr, F::fixed, false, D::none, kZemit2,
     "longitudinal correlation data"},
    {Kind::Zemit, ".Zemit", 12, &X::Zemit_EXISTS, nullptr, F::fixed, false, D::alone, kZemit,
     "longitudinal beam data along z"},
    {Kind::ref, ".ref", 13, &X::ref_EXISTS, &Session::R_PKT, F::free, false, D::alone, kRef,
     "reference particle along z"},
    {Kind::tcheck, ".tcheck", 14, &X::tcheck_EXISTS, &Session::T_PKT, F::free, false, D::alone, kTcheck,
     "time steps and space-charge scaling"},
    {Kind::track, ".track", 15, &X::track_EXISTS, nullptr, F::free, false, D::alone, kTrack,
     "probe particle trajectories"},
    {Kind::Scan, ".Scan", 16, &X::Scan_EXISTS, &Session::S_PKT, F::free, false, D::alone, kScan,
     "parameter scan results"},
    {Kind::lab, ".lab", 21, &X::lab_EXISTS, nullptr, F::a80, false, D::none, {}, "labels of the .Scan plots"},
    {Kind::LandF, ".LandF", 17, &X::LandF_EXISTS, nullptr, F::fixed, false, D::alone, kLandF,
     "losses and energy deposition along z"},
    {Kind::Cr_emit, ".Cr_emit", 19, &X::Cr_emit_EXISTS, nullptr, F::fixed, false, D::alone, kSubEmit,
     "beam without cross-over particles"},
    {Kind::Sub_emit, ".Sub_emit", 19, &X::Sub_emit_EXISTS, nullptr, F::fixed, false, D::alone, kSubEmit,
     "sub-ensemble"},
    {Kind::PScan, ".PScan", 20, &X::PScan_EXISTS, nullptr, F::fixed, false, D::alone, kPScan,
     "phase scan results"},
    {Kind::TRemit, ".TRemit", 22, &X::TRemit_EXISTS, nullptr, F::fixed, false, D::alone, kTRemit,
     "trace space emittances"},
    {Kind::Cemit, ".Cemit", 23, &X::Cemit_EXISTS, nullptr, F::fixed, false, D::alone, kCemit,
     "core emittances"},
    {Kind::C99emit, ".C99emit", 23, &X::C99emit_EXISTS, nullptr, F::fixed, false, D::alone, kCemit,
     "core emittances of the outer per mille"},
    {Kind::Cathode, ".Cathode", 26, &X::Cathode_EXISTS, &Session::C_PKT, F::fixed, true, D::alone, kCathode,
     "fields and emission at the cathode along time"},
    {Kind::Error, ".Error", 27, &X::Error_EXISTS, &Session::E_PKT, F::free, false, D::alone, kError,
     "one record a run of a run series"},
    {Kind::lab_E,
     ".lab-E",
     28,
     &X::lab_E_EXISTS,
     nullptr,
     F::a80,
     false,
     D::none,
     {},
     "labels of the .Error plots"},
    {Kind::Sigma, ".Sigma", 29, &X::Sigma_EXISTS, nullptr, F::free, false, D::none, kSigma,
     "sigma matrix along z"},
};
static_assert(std::size(kCatalogue) == kKindCount);

}  // namespace

std::span<const RunKind> run_catalogue() {
    return kCatalogue;
}

const RunKind& run_kind(Kind k) {
    const RunKind& r = kCatalogue[static_cast<std::size_t>(k)];
    if (r.kind != k) throw std::logic_error("run catalogue: rows out of the order of Kind");
    return r;
}

const RunKind* kind_of_stem(std::string_view stem) {
    const RunKind* best = nullptr;
    for (const RunKind& k : kCatalogue) {
        const std::string_view suffix = k.suffix;
        if (stem.ends_with(suffix) && (!best || suffix.size() > std::string_view(best->suffix).size()))
            best = &k;
    }
    return best;
}

const RunKind* kind_named(std::string_view name) {
    if (name.starts_with('.')) name.remove_prefix(1);
    for (const RunKind& k : kCatalogue) {
        const std::string_view suffix = std::string_view(k.suffix).substr(1);
        if (name == suffix || (suffix == "lab-E" && name == "lab_E")) return &k;
    }
    return nullptr;
}

std::string kind_names() {
    std::string all;
    for (const RunKind& k : kCatalogue) all += (all.empty() ? "" : ", ") + std::string(k.suffix + 1);
    return all;
}

std::string run_file_name(const RunKind& k, std::string_view project, std::string_view run) {
    return std::string(project) + k.suffix + std::string(run.substr(0, 4));
}

RunRecord::RunRecord(const RunKind& k) : kind_(k) {
    if (k.form != RecordForm::free) return;
    for (std::size_t i = 0; i < k.fields.size(); ++i) {
        switch (k.fields[i].type) {
            case 'i':
                targets_.emplace_back(&ints_[i]);
                break;
            case 'd':
                targets_.emplace_back(&doubles_[i]);
                break;
            default:
                targets_.emplace_back(&reals_[i]);
                break;
        }
    }
}

bool RunRecord::read(TableFile& f) {
    switch (kind_.form) {
        case RecordForm::fixed:
            return read_fixed(f, std::span<float>(reals_.data(), kind_.fields.size()),
                              kind_.logical ? &logical_ : nullptr);
        case RecordForm::free:
            return read_free(f, std::span<const FreeField>(targets_));
        case RecordForm::a80:
            return read_a80(f, text_);
    }
    return false;
}

}  // namespace viewer

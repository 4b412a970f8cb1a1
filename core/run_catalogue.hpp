// The one catalogue of run-file kinds: for each kind its suffix, the unit it
// is kept open on, its existence flag, the line count kept at load, its
// record form and the fields of a record with their units. The run load,
// the plots, the example generator and the tests all read it; adding a kind
// is adding a row.
//
//   const RunKind& k = run_kind(Kind::ref);       // ".ref", unit 13, free, 7 reals
//   RunRecord r(k);
//   while (r.read(s.unit(k.unit))) use(r.real(reference::ENE));
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/records.hpp"
#include "core/run_files.hpp"

namespace viewer {

struct Session;

// The kinds in the order the run load probes them.
enum class Kind {
    Xemit,
    Yemit,
    Xemit2,
    Yemit2,
    Zemit2,
    Zemit,
    ref,
    tcheck,
    track,
    Scan,
    lab,
    LandF,
    Cr_emit,
    Sub_emit,
    PScan,
    TRemit,
    Cemit,
    C99emit,
    Cathode,
    Error,
    lab_E,
    Sigma,
};
constexpr int kKindCount = 22;

enum class RecordForm {
    fixed,  // one line cut into fields of 12 columns, optionally an L3 field after them
    free,   // numbers separated by blanks, commas or line ends, over lines if need be
    a80,    // one line of text, cut or padded to 80 characters
};

// What finding a kind means for "this run has data".
enum class DataRole {
    none,   // does not count
    alone,  // counts on its own
    pair,   // counts once .Xemit and .Yemit are both there
};

// One field of a record, by the name the plots give it.
struct Field {
    const char* name;
    const char* unit;  // "" where the plots take none from it
    char type = 'r';   // free records: 'r' 32-bit real, 'i' integer, 'd' 64-bit real
};

struct RunKind {
    Kind kind;
    const char* suffix;    // ".Xemit": the file is <project><suffix><run>
    int unit;              // where the run load keeps it open
    bool Fexist::*exists;  // its existence flag
    int Session::*count;   // the line count taken at load; null where none is kept
    RecordForm form;
    bool logical;  // fixed: an L3 truth field follows the numbers
    DataRole data;
    std::span<const Field> fields;  // in file order; empty for text
    const char* holds;              // what the table holds

    int reals() const { return static_cast<int>(fields.size()); }  // numbers a record
};

// Every kind, in probe order.
std::span<const RunKind> run_catalogue();
const RunKind& run_kind(Kind k);
// The kind whose suffix ends `stem` (longest suffix first), or null.
const RunKind* kind_of_stem(std::string_view stem);

// The kind a user names: its suffix with or without the dot ("Xemit",
// ".lab-E"); "lab_E" as the enumeration spells it. Null for any other name.
const RunKind* kind_named(std::string_view name);
// "Xemit, Yemit, ...": every kind as kind_named takes it.
std::string kind_names();

// The file name of a kind for a project and a run ("rfgun", ".001").
std::string run_file_name(const RunKind& k, std::string_view project, std::string_view run);

// Field positions (0-based) in the records, by the tracker's names.
namespace xemit {
enum : int { Z_MEAN, CLOCK, X_MEAN, X_RMS, XP_RMS, NX_EMIT, CO_XPX };
}
namespace yemit {
enum : int { Z_MEAN, CLOCK, Y_MEAN, Y_RMS, YP_RMS, NY_EMIT, CO_YPY };
}
namespace zemit {
enum : int { Z_MEAN, CLOCK, E_MEAN, Z_RMS, E_RMS, NZ_EMIT, CO_EZ };
}
namespace xemit2 {
enum : int { Z_MEAN, C3XZ, C4XZ, REMITZX, C3XE, C4XE, REMITEX };
}
namespace zemit2 {
enum : int { Z_MEAN, C1, C2Z, C3Z2, REMITEZ2, C4Z3, REMITEZ3 };
}
namespace reference {
enum : int { Z_MEAN, CLOCK, ENE, GRAD, LARMOR, XX, YY };
}
namespace tcheck {
enum : int { ZMEAN, CLOCK, NR_R, NR_Z, NR_GAM, NZ_R, NZ_GAM, S_COUNT };
}
namespace track {
enum : int { I, STAT, Z, X, Y, EZ, ER, BFI };
}
namespace landf {
enum : int { Z_MEAN, NUM_PART, Q, PART_LOSS, ENE_DEP, BEAM_LOAD };
}
namespace sub_emit {
enum : int { Z_MEAN, CLOCK, SUB_XRM, SUB_YRM, CR_EMITX, CR_EMITY, SUMQ, SUMQ_CR };
}
namespace pscan {
enum : int { PHASE, E_MEAN, COMPRESS, BET_RAT };
}
namespace tremit {
enum : int { Z_MEAN, CLOCK, TR_EMITX, TR_EMITY, TR_EMITZ };
}
namespace cemit {
enum : int { Z_MEAN, CEMITX, CX_95, CX_90, CX_80, CEMITY, CY_95, CY_90, CY_80, CEMITZ, CZ_95, CZ_90, CZ_80 };
}
namespace cathode {
enum : int { Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX };
}

constexpr int kMaxRecordFields = 23;  // the widest record, of .Sigma

// One record of a kind, read with the kind's own form: fixed fields cut by
// columns, or free items each read as its type. The values stay where they
// are between reads, so a plot may hold a reference to a field.
class RunRecord {
public:
    explicit RunRecord(const RunKind& k);
    // The next record; false at the end of the file (a free record cut short
    // by it included). A field that cannot be read throws RecordError.
    bool read(TableFile& f);

    const float& real(int field) const { return reals_[static_cast<std::size_t>(field)]; }
    int integer(int field) const { return ints_[static_cast<std::size_t>(field)]; }
    double real64(int field) const { return doubles_[static_cast<std::size_t>(field)]; }
    bool logical() const { return logical_; }
    const std::string& text() const { return text_; }  // a line of a text kind, 80 characters
    const RunKind& kind() const { return kind_; }

private:
    const RunKind& kind_;
    std::array<float, kMaxRecordFields> reals_{};
    std::array<int, kMaxRecordFields> ints_{};
    std::array<double, kMaxRecordFields> doubles_{};
    bool logical_ = false;
    std::string text_;
    std::vector<FreeField> targets_;  // free records: where each item goes
};

}  // namespace viewer

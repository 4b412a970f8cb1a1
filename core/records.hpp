// The shared records of a session: viewer flags, abscissa windows, menu and
// device state, existence flags of the run files, names, labels, the window
// configuration and the aperture outline.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace viewer {

constexpr int PKT = 9102;  // most points of any plot along z
constexpr int NBOX = 25;   // rows of the left menu column

struct Logo {
    bool SHOW_MENU = true;
    bool TO_FILE = false;
    bool FIT_REQUESTED = false;
    bool ZOOM_Z = false;
    bool ZOOM_PHASE = false;
    bool ZOOM_SCAN = false;
    bool ZOOM_TIME = false;
    bool WITH_GEOMETRY = false;
    bool GEOMETRY_LOADED = false;
    bool COLOUR = false;
    bool OVERVIEW = false;
};

struct Graph {
    float Z_LOWER = 0, Z_UPPER = 0;          // m
    float PHASE_LOWER = 0, PHASE_UPPER = 0;  // deg
    float SCAN_UPPER = 0, SCAN_LOWER = 0;
    float TIME_UPPER = 0, TIME_LOWER = 0;  // ns
    int N_BINS = 10;
};

struct Window {
    int SELECTION = 0;
    int MENU_DEVICE = 0, PLOT_DEVICE = 0, FILE_DEVICE = 0;
    int LAST_SELECTION = 0;
    int PAGE = 1;
    int N_PAGES = 4;
};

struct Menue {
    int N_RIGHT = 0;
    std::array<std::string, 51> LEFT_TEXT;   // 1-based, 33 characters each
    std::array<std::string, 51> RIGHT_TEXT;  // 1-based
};

struct Fexist {
    bool Xemit_EXISTS = false, Yemit_EXISTS = false, Xemit2_EXISTS = false, Yemit2_EXISTS = false,
         Zemit2_EXISTS = false, Zemit_EXISTS = false, ref_EXISTS = false, tcheck_EXISTS = false,
         track_EXISTS = false, Scan_EXISTS = false, lab_EXISTS = false, LandF_EXISTS = false,
         Cr_emit_EXISTS = false, Sub_emit_EXISTS = false, PScan_EXISTS = false, TRemit_EXISTS = false,
         Cemit_EXISTS = false, C99emit_EXISTS = false, Cathode_EXISTS = false, Error_EXISTS = false,
         lab_E_EXISTS = false, Sigma_EXISTS = false;
};

struct Chara {
    std::string PROJECT;     // blank-free stem; may be empty
    std::string RUN;         // ".001"
    std::string PAGE_TITLE;  // the page foot
    std::string FILE_SPEC;   // hardcopy name, then the PGPLOT device text
};

// One label group of a scan plot: three texts of 80 characters.
struct LabelRecord {
    std::string ABSCISSA_LABEL, ORDINATE_LABEL, PLOT_TITLE;
};

// Two banks of 40 records: place g (1..40) of the first bank belongs to
// left row g of page 3, place g + 40 to the `.Error` plots.
struct Labels {
    std::array<LabelRecord, 81> rec;  // 1-based, 1..80
};

struct WinConfig {
    bool FIXED = false;
    int LINE_WIDTH = 2;
    float CHARACTER_HEIGHT = 1.2f;
    int COLOR_MODE = 2;
    float CONTRA = 1.0f;
    float BRIGHT = 0.5f;
    int PLOT_MODE = 0;
    float WIN101_SCALE = 1.0f;
    float WIN102_SCALE = 1.0f;
};

constexpr int GEOM_MAX = 5000;

// The aperture outline, read once per process.
struct Geometry {
    std::vector<float> GEOM_Z;           // m
    std::vector<float> GEOM_R;           // mm
    float GEOM_ZMIN = 0, GEOM_ZMAX = 0;  // m
    float GEOM_RMAX = 0;                 // mm, never 0 after a load
    int GEOM_N = 0;
};

}  // namespace viewer

// The fit menu: eighteen marks in the menu window, the last pick in red,
// and a pick by pointing at a mark.
#include <array>
#include <ostream>
#include <string_view>

#include "core/fortran_format.hpp"
#include "fitting/fit.hpp"

namespace viewer {
namespace {

constexpr int n_slots = 18;
constexpr float mark_x = 0.03f;   // abscissa of the marks, menu world units
constexpr float label_x = 0.06f;  // abscissa of the labels
constexpr float mark_radius = 0.02f;
// Squared reach of a mark. It exceeds half the spacing, so a point between
// two marks reaches both and the upper one wins.
constexpr float reach2 = 0.0009f;

constexpr std::array<std::string_view, n_slots> labels = {"A/r fit",
                                                          "square root fit",
                                                          "straight line fit",
                                                          "parabolic fit",
                                                          "power fit",
                                                          "exponential fit",
                                                          "mod. exponential fit",
                                                          "3rd order polynom",
                                                          "odd polynom of 5th order",
                                                          "gauss",
                                                          "double gauss",
                                                          "",
                                                          "",
                                                          "",
                                                          "",
                                                          "read reference file",
                                                          "store reference file",
                                                          "EXIT sub menu"};

}  // namespace

std::string_view fit_menu_label(int pick) {
    return pick >= 1 && pick <= 11 ? labels[static_cast<std::size_t>(pick - 1)] : std::string_view{};
}

namespace {

constexpr std::array<float, n_slots> mark_y = {0.90f, 0.85f, 0.80f, 0.75f, 0.70f, 0.65f, 0.60f, 0.55f, 0.50f,
                                               0.45f, 0.40f, 0.35f, 0.30f, 0.25f, 0.20f, 0.15f, 0.10f, 0.05f};

// First slot within reach of (x, y), 1-based; 0 for none.
int hit(float x, float y) {
    for (int i = 0; i < n_slots; ++i) {
        const float dx = x - mark_x, dy = y - mark_y[static_cast<std::size_t>(i)];
        if (dx * dx + dy * dy < reach2) return i + 1;
    }
    return 0;
}

void draw_page(Graphics& pg, int ID_F) {
    DrawBracket bracket(pg, DrawBracket::page);
    pg.pgeras();
    pg.pgsci(3);
    pg.pgsch(2.5f);
    pg.pgptxt(0.03f, 0.95f, 0.0f, 0.0f, "\\fiFIT MENU");
    pg.pgslw(1);
    pg.pgsch(2.0f);
    pg.pgsfs(1);
    for (int i = 0; i < n_slots; ++i) {
        const float y = mark_y[static_cast<std::size_t>(i)];
        pg.pgsci(1);
        pg.pgcirc(mark_x, y, mark_radius);
        pg.pgsci(3);
        pg.pgptxt(label_x, y - 0.008f, 0.0f, 0.0f, pad(labels[static_cast<std::size_t>(i)], 33));
    }
    if (ID_F >= 1 && ID_F <= n_slots) {
        pg.pgsci(2);
        pg.pgcirc(mark_x, mark_y[static_cast<std::size_t>(ID_F - 1)], mark_radius);
    }
}

}  // namespace

void fit_menu(Session& s, int& ID_F) {
    Graphics& pg = s.pg;
    pg.pgslct(s.window.MENU_DEVICE);
    pg.pgscr(0, 0.8f, 0.8f, 0.8f);
    pg.pgscf(2);
    draw_page(pg, ID_F);
    s.con.out.flush();  // the plot's statistics show before the wait

    // Clicks beside the marks are passed over; the cursor opens where the
    // last pick was made.
    int pick = 0;
    for (;;) {
        char CH = '\0';
        s.pointer.pgband(0, 1, s.fit_XX, s.fit_YY, s.fit_XX, s.fit_YY, CH);
        if (CH == '\0') break;  // no cursor on this device
        pick = hit(s.fit_XX, s.fit_YY);
        if (pick != 0) break;
    }
    ID_F = pick;
    if (pick != 0) {
        pg.pgsave();
        pg.pgsci(2);
        pg.pgsfs(1);
        pg.pgcirc(mark_x, mark_y[static_cast<std::size_t>(pick - 1)], mark_radius);
        pg.pgunsa();
    }
    pg.pgslct(s.window.PLOT_DEVICE);
}

}  // namespace viewer

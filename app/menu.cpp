// The menu widget.
#include "app/menu.hpp"

#include <ostream>
#include <string>

namespace viewer {
namespace {
constexpr float X1 = 0.03f;         // dots of the left column
constexpr float X2 = 0.06f;         // texts of the left column
constexpr float kStep = 0.18f;      // to the right column
constexpr float kDot = 0.015f;      // dot and last-selection mark
constexpr float kPick = 0.02f;      // mark drawn at the pick
constexpr float kReach2 = 0.0009f;  // squared hit radius
constexpr float kDrop = 0.008f;     // text baseline below the dot
}  // namespace

float menu_row_y(int i, int N) {
    return 1.0f - (static_cast<float>(i) + 0.5f) / static_cast<float>(N + 1);
}

int menu(Session& s, int last, int page, int n_pages, int N) {
    Graphics& pg = s.pg;
    const Menue& m = s.menue;
    const std::string heading =
        "\\fiMENU " + std::to_string(page % 10) + " of " + std::to_string(n_pages % 10);

    pg.pgscr(0, 0.4f, 0.4f, 0.4f);
    DrawBracket bracket(pg, DrawBracket::page);
    pg.pgeras();
    pg.pgsci(1);
    pg.pgsch(2.5f);
    pg.pgptxt(X1, 1.0f - 0.5f / static_cast<float>(N + 2), 0.0f, 0.0f, heading);
    pg.pgslw(1);
    pg.pgsch(2.0f);
    pg.pgsci(1);
    pg.pgsfs(1);
    for (int i = 1; i <= N; ++i) {
        const float y = menu_row_y(i, N);
        pg.pgcirc(X1, y, kDot);
        pg.pgptxt(X2, y - kDrop, 0.0f, 0.0f, m.LEFT_TEXT[static_cast<std::size_t>(i)]);
    }
    for (int i = 1; i <= m.N_RIGHT; ++i) {
        const float y = menu_row_y(i, N);
        pg.pgcirc(X1 + kStep, y, kDot);
        pg.pgptxt(X2 + kStep, y - kDrop, 0.0f, 0.0f, m.RIGHT_TEXT[static_cast<std::size_t>(i)]);
    }
    pg.pgsci(2);
    pg.pgsfs(1);
    if (last >= 1 && last <= 29)
        pg.pgcirc(X1, menu_row_y(last, N), kDot);
    else if (last >= 31)
        pg.pgcirc(X1 + kStep, menu_row_y(last - 30, N), kDot);
    bracket.close();
    s.con.out.flush();  // everything said so far shows before the wait

    for (;;) {
        char ch = '\0';
        float x = s.menu_XX, y = s.menu_YY;
        if (s.pointer.pgband(0, 1, s.menu_XX, s.menu_YY, x, y, ch) != 1) ch = '\0';
        if (ch == '\0') return 0;
        s.menu_XX = x;
        s.menu_YY = y;
        if (y > 1.0f - 1.0f / static_cast<float>(N + 2)) return -1;
        int code = 0;
        float cx = X1, cy = 0;
        for (int i = 1; i <= N && code == 0; ++i) {
            const float yi = menu_row_y(i, N);
            if ((x - X1) * (x - X1) + (y - yi) * (y - yi) < kReach2) code = i, cy = yi;
        }
        for (int i = 1; i <= m.N_RIGHT && code == 0; ++i) {
            const float yi = menu_row_y(i, N);
            const float dx = x - X1 - kStep;
            if (dx * dx + (y - yi) * (y - yi) < kReach2) code = i + 30, cx = X1 + kStep, cy = yi;
        }
        if (code == 0) continue;  // a click in empty space is ignored
        pg.pgsave();
        pg.pgsci(2);
        pg.pgsfs(1);
        pg.pgcirc(cx, cy, kPick);
        pg.pgunsa();
        return code;
    }
}

}  // namespace viewer

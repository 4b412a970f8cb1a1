// Hardcopy and overview export.
#include "app/hardcopy.hpp"

#include <ostream>

#include "app/windows.hpp"
#include "core/fortran_format.hpp"

namespace viewer {

std::optional<FileDevice> device_for_name(const std::string& name) {
    if (name.find('.') == std::string::npos) return FileDevice{name + ".ps/PS", false};
    struct Ext {
        const char* holds;
        const char* device;
        bool colour;
    };
    static constexpr Ext kTable[] = {{".ps", ".ps/PS", false},
                                     {".vps", ".ps/VPS", false},
                                     {".cps", ".ps/CPS", true},
                                     {".vcps", ".ps/VCPS", true},
                                     {".cvps", ".ps/VCPS", true}};
    for (const Ext& e : kTable) {
        auto p = name.find(e.holds);
        if (p != std::string::npos) return FileDevice{name.substr(0, p) + e.device, e.colour};
    }
    return std::nullopt;
}

bool open_file(Session& s) {
    if (s.logo.OVERVIEW) {
        if (trim_right(s.chara.PROJECT).empty()) {
            s.chara.FILE_SPEC = "B-Overview.ps/CPS";
            s.logo.COLOUR = true;
        } else {
            s.chara.FILE_SPEC = std::string(up_to_blank(s.chara.PROJECT)) +
                                std::to_string(s.window.PAGE % 10) + s.chara.RUN.substr(0, 4) + ".ps/PS";
        }
    } else {
        for (;;) {
            s.con.out << "     extensions: .ps   = landscape\n"
                      << "                 .vps  = portrait\n"
                      << "                 .cps  = color, landscape\n"
                      << "                 .cvps = colour, portrait\n";
            s.con.prompt("     Enter file name : ");
            const std::string name = s.con.read_item();
            s.logo.COLOUR = false;
            if (auto dev = device_for_name(name)) {
                s.chara.FILE_SPEC = dev->device;
                s.logo.COLOUR = dev->colour;
                break;
            }
            s.con.out << " Invalid extension\n";
        }
    }
    s.window.FILE_DEVICE = s.pg.pgopen(s.path(s.chara.FILE_SPEC));
    if (s.window.FILE_DEVICE <= 0) {
        const auto slash = s.chara.FILE_SPEC.find('/');
        s.con.out << "     Cannot create file: " << s.chara.FILE_SPEC.substr(0, slash) << "\n";
        s.window.FILE_DEVICE = 0;
        return false;
    }
    set_hardcopy_look(s);
    return true;
}

void finish_file(Session& s) {
    const auto slash = s.chara.FILE_SPEC.find('/');
    s.con.out << "     saved to file:   " << right_in(s.chara.FILE_SPEC.substr(0, slash), 30) << "\n";
    s.pg.pgclos();
    s.logo.TO_FILE = false;
}

}  // namespace viewer

// Hardcopies: the file-name dialogue with its table of extensions, opening
// the PostScript device, and finishing the file.
#pragma once

#include <optional>
#include <string>

#include "core/session.hpp"

namespace viewer {

// PGPLOT device text and colour flag for a typed name; nullopt when the
// extension is refused. "run5" -> "run5.ps/PS", "run5.cvps" -> "run5.ps/VCPS".
struct FileDevice {
    std::string device;  // "<file>/<type>"
    bool colour;
};
std::optional<FileDevice> device_for_name(const std::string& name);

// Names the file (asks, or builds the overview name), opens the device and
// sets it up. False when the file cannot be created: a message is printed
// and no device is left open.
bool open_file(Session& s);

// "saved to file:" and the device closed.
void finish_file(Session& s);

}  // namespace viewer

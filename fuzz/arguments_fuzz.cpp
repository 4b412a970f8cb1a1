// The argument grammar: the run argument (name, name., name,nnn,
// name.,nnn) and the options of the export, over any text.
#include <vector>

#include "app/command_line.hpp"
#include "app/startup.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::string text(reinterpret_cast<const char*>(data), size);
    fuzz::FuzzSession fs;
    fs.s.FNAME = text.substr(0, 80);
    parse_arguments(fs.s);
    if (fs.s.RUN_NUMBER < 0 || fs.s.RUN_NUMBER > 999) std::abort();

    std::vector<std::string> words{"viewer"};
    std::string w;
    for (char c : text) {
        if (c == '\0' || c == '\n') {
            words.push_back(w);
            w.clear();
        } else {
            w += c;
        }
    }
    words.push_back(w);
    std::vector<const char*> argv;
    for (const auto& a : words) argv.push_back(a.c_str());
    try {
        parse_export(static_cast<int>(argv.size()), argv.data());
    } catch (const UsageError&) {
    }
    return 0;
}

// The fast path of the tracker's 12-column fields against the library:
// wherever it takes a field, the value is the correctly rounded one of the
// field's text, bit for bit.
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/number_parsing.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    char field[12];
    std::memset(field, ' ', sizeof field);
    std::memcpy(field, data, size < sizeof field ? size : sizeof field);
    float fast = 0;
    if (!viewer::number::parse_e12_4(field, fast)) return 0;
    std::string text;  // blanks out, the exponent letter as the library spells it
    for (char c : field)
        if (c != ' ') text += (c == 'D' || c == 'd') ? 'E' : c;
    float slow = 0;
    const auto r = std::from_chars(text.data(), text.data() + text.size(), slow);
    if (r.ptr != text.data() + text.size()) std::abort();
    if (r.ec == std::errc{} && std::memcmp(&fast, &slow, sizeof fast) != 0) std::abort();
    // Out of the float's range the fast path never answers: the fields it takes are all in range.
    if (r.ec != std::errc{}) std::abort();
    return 0;
}

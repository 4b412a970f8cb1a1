// Label groups of the scan and run-series plots.
#include "analysis/labels.hpp"

#include <ostream>

#include "core/fortran_format.hpp"

namespace viewer {

bool read_label_groups(TableFile& f, Labels& labels, int first, bool& exists,
                       void (*complete)(LabelRecord&)) {
    try {
        for (int g = 0; g < kLabelGroups; ++g) {
            LabelRecord& rec = labels.rec.at(static_cast<std::size_t>(first + g));
            if (!read_a80(f, rec.ABSCISSA_LABEL) || !read_a80(f, rec.ORDINATE_LABEL) ||
                !read_a80(f, rec.PLOT_TITLE))
                return true;
            if (complete) complete(rec);
            exists = false;
        }
    } catch (const RecordError&) {
        return false;
    }
    return true;
}

void as_histogram_labels(LabelRecord& rec) {
    const auto K = rec.PLOT_TITLE.find("vs");
    if (K != std::string::npos) rec.PLOT_TITLE = pad(rec.PLOT_TITLE.substr(0, K), 80);
    rec.ABSCISSA_LABEL = rec.ORDINATE_LABEL;
    rec.ORDINATE_LABEL = pad("\\fioccurence", 80);
}

void report_label_error(std::ostream& out) {
    out << "\n          Error reading labels\n";
}

}  // namespace viewer

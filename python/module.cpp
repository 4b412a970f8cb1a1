// The binding of the notebook module: the calls of calls.hpp as Python
// sees them. Tables and particles come out as numpy arrays over the
// reader's own buffer; every call that reads or draws lets go of the GIL.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "app/command_line.hpp"
#include "python/calls.hpp"

namespace py = pybind11;
using namespace viewer::python;

namespace {

// Hands `owner`'s buffer to numpy: the array keeps the owner alive, no copy.
template <class T>
py::capsule keeper(std::unique_ptr<T> owner) {
    return py::capsule(owner.release(), [](void* p) { delete static_cast<T*>(p); });
}

const char* numpy_format(const viewer::TableColumn& c) {
    switch (c.type) {
        case viewer::TableColumn::real32:
            return "<f4";
        case viewer::TableColumn::real64:
            return "<f8";
        case viewer::TableColumn::integer:
            return "<i4";
        case viewer::TableColumn::truth:
            return "?";
        case viewer::TableColumn::text:
            return "S80";
    }
    return "";
}

py::array table_array(std::unique_ptr<PackedTable> t) {
    py::list names, formats, offsets;
    for (std::size_t c = 0; c < t->columns.size(); ++c) {
        names.append(t->columns[c].name);
        formats.append(numpy_format(t->columns[c]));
        offsets.append(t->offsets[c]);
    }
    py::dict d;
    d["names"] = names;
    d["formats"] = formats;
    d["offsets"] = offsets;
    d["itemsize"] = t->itemsize;
    const py::dtype dtype = py::dtype::from_args(d);
    const auto rows = static_cast<py::ssize_t>(t->rows);
    const auto item = static_cast<py::ssize_t>(t->itemsize);
    void* data = t->bytes.data();
    return py::array(dtype, {rows}, {item}, data, keeper(std::move(t)));
}

py::array particle_array(std::unique_ptr<ParticleArray> a) {
    py::list fields;
    for (const std::string& n : a->names) fields.append(py::make_tuple(n, "<f8"));
    const py::dtype dtype = py::dtype::from_args(fields);
    const auto rows = static_cast<py::ssize_t>(a->rows);
    const auto item = static_cast<py::ssize_t>(a->names.size() * sizeof(double));
    void* data = a->values.data();
    return py::array(dtype, {rows}, {item}, data, keeper(std::move(a)));
}

}  // namespace

PYBIND11_MODULE(_viewer, m) {
    m.doc() = "The compiled part of the viewer module; use `import viewer`.";
    py::register_exception<Refusal>(m, "ViewerError");
    m.attr("__version__") = viewer::version_line().substr(7);

    py::class_<Library>(m, "Library", "The one drawing state of the process: every pass goes through it.")
        .def(py::init<>())
        .def(
            "run",
            [](Library& lib, const std::string& dir, const std::vector<std::string>& args,
               const std::string& picture, const std::string& save, bool numbers) {
                Outcome o;
                {
                    py::gil_scoped_release free;
                    o = lib.run({dir, args, picture, save, numbers});
                }
                py::dict d;
                d["text"] = o.text;
                d["picture"] = py::bytes(o.picture);
                d["csv"] = o.csv;
                d["json"] = o.json;
                d["notes"] = o.notes;
                return d;
            },
            py::arg("dir"), py::arg("args"), py::arg("picture") = "", py::arg("save") = "",
            py::arg("numbers") = false,
            "One pass of the export, as the command line after the program's name.");

    m.def("table_kinds", &table_kinds, py::call_guard<py::gil_scoped_release>(), py::arg("dir"),
          py::arg("project"), py::arg("run"), "The table kinds a run has.");
    m.def(
        "read_table",
        [](const std::string& dir, const std::string& project, int run, const std::string& kind) {
            std::unique_ptr<PackedTable> t;
            {
                py::gil_scoped_release free;
                t = std::make_unique<PackedTable>(read_table(dir, project, run, kind));
            }
            return table_array(std::move(t));
        },
        py::arg("dir"), py::arg("project"), py::arg("run"), py::arg("kind"),
        "A table as a structured array.");
    m.def(
        "units",
        [](const std::string& kind) {
            const viewer::RunKind* k = viewer::kind_named(kind);
            if (!k) throw Refusal("no table kind \"" + kind + "\": the kinds are " + viewer::kind_names());
            py::dict d;
            for (const viewer::TableColumn& c : viewer::table_columns(*k)) d[py::str(c.name)] = c.unit;
            return d;
        },
        py::arg("kind"), "The unit of each field of a table kind.");
    m.def(
        "list_particles",
        [](const std::string& dir, const std::string& project, int run) {
            std::vector<ParticleFileInfo> list;
            {
                py::gil_scoped_release free;
                list = list_particles(dir, project, run);
            }
            py::list out;
            for (const ParticleFileInfo& f : list) {
                py::dict d;
                d["id"] = out.size();
                d["name"] = f.name;
                d["path"] = f.path;
                d["position"] = f.position;
                d["z"] = f.z;
                d["particles"] = f.particles;
                d["active"] = f.active;
                out.append(d);
            }
            return out;
        },
        py::arg("dir"), py::arg("project"), py::arg("run"), "The run's particle files.");
    m.def(
        "read_particles",
        [](const std::string& path) {
            std::unique_ptr<ParticleArray> a;
            {
                py::gil_scoped_release free;
                a = std::make_unique<ParticleArray>(read_particles(path));
            }
            py::dict units;
            for (std::size_t c = 0; c < a->names.size(); ++c) units[py::str(a->names[c])] = a->units[c];
            return py::make_tuple(particle_array(std::move(a)), units);
        },
        py::arg("path"), "The active particles of a file in the views' units, and those units.");
}

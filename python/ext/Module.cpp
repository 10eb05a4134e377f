// The extension _sondara of the Python package sondara: the checker's check
// and levels of one source, and the ordered queue of check_many, as JSON
// text that the package reads into its types. Every check runs without the
// interpreter's lock.
#include "CheckQueue.h"
#include "SourceCheck.h"

#include "base/Utf8.h"
#include "platform/ProgramVersion.h"
#include "platform/posix/Utf8Path.h"

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <utility>

namespace py = pybind11;

namespace {

// A C-contiguous buffer of the caller's, held for the length of one call.
class HeldBuffer {
public:
    explicit HeldBuffer(const py::object& data)
    {
        if (PyObject_GetBuffer(data.ptr(), &view, PyBUF_C_CONTIGUOUS) != 0)
            throw py::error_already_set();
    }
    ~HeldBuffer() { PyBuffer_Release(&view); }
    HeldBuffer(const HeldBuffer&) = delete;
    HeldBuffer& operator=(const HeldBuffer&) = delete;

    MemoryBytes Bytes() const
    {
        return {static_cast<const std::uint8_t*>(view.buf), static_cast<std::size_t>(view.len)};
    }

private:
    Py_buffer view{};
};

CheckSource PathSource(const py::bytes& path)
{
    CheckSource source;
    source.path = WideString(platform::posix::PathFromBytes(std::string(path)));
    return source;
}

CheckSource MemorySource(const HeldBuffer& held, const std::string& name)
{
    CheckSource source;
    source.path = WideString(Utf8ToWide(name));
    source.inMemory = true;
    source.bytes = held.Bytes();
    return source;
}

using Answer = std::pair<int, py::bytes>;

Answer AnswerOf(const SourceOutcome& outcome)
{
    return {static_cast<int>(outcome.state), py::bytes(outcome.text)};
}

template <typename Work>
Answer Unlocked(Work work)
{
    SourceOutcome outcome;
    {
        py::gil_scoped_release unlocked;
        outcome = work();
    }
    return AnswerOf(outcome);
}

} // namespace

PYBIND11_MODULE(_sondara, module)
{
    module.doc() = "The checker of sondara-check, for the package sondara; use sondara, not this.";
    module.attr("__version__") = SONDARA_VERSION_DOTTED;

    module.def(
        "check_path",
        [](const py::bytes& path) { return Unlocked([&] { return CheckSourceAsJson(PathSource(path)); }); },
        py::arg("path"), "(state, JSON) of the file at path, given as the system's bytes.");
    module.def(
        "check_bytes",
        [](const py::object& data, const std::string& name) {
            HeldBuffer held(data);
            return Unlocked([&] { return CheckSourceAsJson(MemorySource(held, name)); });
        },
        py::arg("data"), py::arg("name"), "(state, JSON) of a file's bytes, shown under name.");
    module.def(
        "levels_path",
        [](const py::bytes& path, bool loudness) {
            return Unlocked([&] { return MeasureSourceAsJson(PathSource(path), loudness); });
        },
        py::arg("path"), py::arg("loudness"), "(state, JSON or reason) of the levels of the file at path.");
    module.def(
        "levels_bytes",
        [](const py::object& data, const std::string& name, bool loudness) {
            HeldBuffer held(data);
            return Unlocked([&] { return MeasureSourceAsJson(MemorySource(held, name), loudness); });
        },
        py::arg("data"), py::arg("name"), py::arg("loudness"), "(state, JSON or reason) of the levels of bytes.");

    // The caller keeps the object whose bytes it puts alive, and unchanged,
    // until that source's outcome is taken: the buffer is let go at once.
    py::class_<CheckQueue>(module, "CheckQueue", "Checks on threads, taken in the order put.")
        .def(py::init<unsigned>(), py::arg("jobs"))
        .def("put_path", [](CheckQueue& queue, const py::bytes& path) { queue.Put(PathSource(path)); })
        .def("put_bytes",
             [](CheckQueue& queue, const py::object& data, const std::string& name) {
                 HeldBuffer held(data);
                 queue.Put(MemorySource(held, name));
             })
        .def("take",
             [](CheckQueue& queue) -> py::object {
                 SourceOutcome outcome;
                 bool got = false;
                 {
                     py::gil_scoped_release unlocked;
                     got = queue.Take(outcome);
                 }
                 if (!got)
                     return py::none();
                 return py::cast(AnswerOf(outcome));
             })
        .def_property_readonly("pending", &CheckQueue::Pending);
}

// The peer of the C++ library that most authors of bindings use.

#include <pybind11/pybind11.h>

#include <cmath>

namespace {

class Thing {
 public:
  Thing(double x, double y, double z) : x_(x), y_(y), z_(z) {}

  int GetWidth() const { return width_; }
  double Weigh(int a, double b) const { return x_ + a * b; }
  static double GetDistance(const Thing& a, const Thing& b) {
    const double x = a.x_ - b.x_, y = a.y_ - b.y_, z = a.z_ - b.z_;
    return std::sqrt(x * x + y * y + z * z);
  }

 private:
  double x_, y_, z_;
  int width_ = 64;
};

}  // namespace

PYBIND11_MODULE(peer_pybind11, module) {
  namespace py = pybind11;
  py::class_<Thing>(module, "Thing")
      .def(py::init<double, double, double>(), py::arg("x") = 0.0, py::arg("y") = 0.0, py::arg("z") = 0.0)
      .def("GetWidth", &Thing::GetWidth)
      .def("Weigh", &Thing::Weigh, py::arg("a"), py::arg("b"))
      .def_static("GetDistance", &Thing::GetDistance, py::arg("v1"), py::arg("v2"));
}

// qlx.Quaternion: a rotation.

#include "kelvar/quaternion.h"
#include "values/numbers.h"

namespace qlx {
namespace {

bool ReadNothing(PyObject* const*, Py_ssize_t count, Quaternion& value) {
  value = kIdentityQuaternion;
  return count == 0;
}

PyObject* CreateQuaternion(PyTypeObject*, PyObject* args, PyObject* keywords) {
  Arguments<&CreateQuaternion, TypeList<>, ""> none;
  return none.Parse(args, keywords) ? NewQuaternion(kIdentityQuaternion) : nullptr;
}

using QuaternionConstructor = Constructor<Quaternion, ReadNothing, CreateQuaternion>;

void SetMatrix(Quaternion& self, const Matrix& m) {
  self = kelvar::QuaternionOfRotation(kelvar::Normalized(m));
}
void SetMatrixNorm(Quaternion& self, const Matrix& m) { self = kelvar::QuaternionOfRotation(m); }
void SetHPB(Quaternion& self, const Vector& hpb) { self = kelvar::QuaternionOfHpb(hpb); }
void SetAxis(Quaternion& self, const Vector& v, double w) { self = {v, w}; }

PyObject* Describe(const Quaternion& q, PyObject* spec) {
  return NumberText(spec).Add("(").Add({q.v.x, q.v.y, q.v.z, q.w}).Add(") ").Finish();
}

// The constructor takes nothing: the attributes follow as the state.
PyObject* Reduce(const Quaternion& q) {
  return Py_BuildValue("O()(O{sNsd})", reinterpret_cast<PyObject*>(&g_QuaternionType), Py_None, "v",
                       NewVector(q.v), "w", q.w);
}

PyGetSetDef g_attributes[] = {
    Attribute<&Quaternion::v>("v", "The axis times the sine of half the angle; a copy."),
    Attribute<&Quaternion::w>("w", "The cosine of half the angle, a float."),
    {},
};

PyMethodDef g_methods[] = {
    Method<&kelvar::RotationOf>("GetMatrix", "Derives a rotation matrix from the quaternion."),
    Method<&SetMatrix, "M", "m">("SetMatrix", "Derives quaternion values from a rotation matrix."),
    Method<&SetMatrixNorm, "M", "m">("SetMatrixNorm",
                                     "Derives quaternion values from a normalized rotation matrix."),
    Method<&SetHPB, "V", "hpb">("SetHPB", "Derives quaternion values from a HPB rotation."),
    Method<&SetAxis, "Vf", "v", "w">("SetAxis", "Sets the quaternion values directly."),
    Method<&Reduce>("__reduce__", "__reduce__() -> tuple\n\nFor pickle and copy."),
    FormatMethod<Quaternion, Describe>(),
    {},
};

Conversion Convert(PyObject* object, void* target) {
  if (!IsQuaternion(object)) return Conversion::kWrongType;
  *static_cast<Quaternion*>(target) = ValueOf<Quaternion>(object);
  return Conversion::kStored;
}

const LetterEntry g_letter(ValueLetter::kQuaternion, Convert);

}  // namespace

PyTypeObject g_QuaternionType = MakeType<ValueRecord<Quaternion>>({
    .name = "qlx.Quaternion",
    .doc = "Quaternion() -> the identity\n\n"
           "A rotation as a unit quaternion, v the vector part and w the scalar part.\n\n"
           "HPB angles are in radians: heading about y, pitch about x, bank about z, and the rotation is their "
           "product heading * pitch * bank, so that bank applies first. A positive heading turns z towards x, "
           "a positive pitch y towards z, a positive bank x towards y; in left-handed axes that is clockwise "
           "as seen from the tip of the axis, in right-handed ones counter-clockwise.\n\n"
           "From a matrix the values follow Shepperd (1978), with w not negative. SetMatrix normalizes the "
           "axes first, SetMatrixNorm takes them as they are. GetMatrix follows Shoemake (1985), also for a "
           "quaternion of another length than 1; that of length 0 gives the identity.",
    .methods = g_methods,
    .create = QuaternionConstructor::Create,
    .destroy = Present<Quaternion>::Free,
    .text = Text<Quaternion, Describe>,
    .attributes = g_attributes,
    .quickCreate = QuaternionConstructor::CreateQuick,
    .flags = kInlineValue,
});

namespace {
const TypeQueueEntry g_entry(g_QuaternionType);
}

}  // namespace qlx

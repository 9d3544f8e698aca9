// Where an object stands: place, rotation and scale, in two parts, and the matrix of both.
#ifndef HOST_SCENE_PLACEMENT_H
#define HOST_SCENE_PLACEMENT_H

#include <memory>
#include <vector>

#include "kelvar/matrix.h"

namespace host {

enum RotationOrder : int32_t {
  kOrderYXZ,
  kOrderYZX,
  kOrderZYX,
  kOrderZXY,
  kOrderXZY,
  kOrderXYZ,
  kOrderHPB  // heading, pitch, bank: about Y, X and Z of the turned object, as YXZ
};

struct Placement {
  Vector position{}, rotation{}, scale{1, 1, 1};
};

// The matrix of angles in radians about the axes of the world. The angles stand at the axes that they turn
// about; but for HPB, whose x turns about Y, y about X, and z about Z.
Matrix RotationMatrix(const Vector& angles, int32_t order);
// The angles of the axes' directions.
Vector RotationAngles(const Matrix& matrix, int32_t order);

Matrix MatrixOf(const Placement& placement, int32_t order);
// Without shear; mirrored axes get a negative z.
Placement PlacementOf(const Matrix& matrix, int32_t order);

// `local` is the product of the frozen matrix and the relative one. It keeps the shear that it was set with
// until the rotation or the scale is set.
class ObjectPlace {
 public:
  ObjectPlace() = default;
  ObjectPlace(const ObjectPlace& other) { *this = other; }
  ObjectPlace& operator=(const ObjectPlace& other);

  const Matrix& Local() const { return data_ ? data_->local : kIdentityMatrix; }
  void SetLocal(const Matrix& local);
  void SetPosition(const Vector& position);
  Matrix RelativeMatrix() const;
  void SetRelativeMatrix(const Matrix& matrix);
  Matrix FrozenMatrix() const { return IsFrozen() ? MatrixOf(*data_->frozen, Order()) : kIdentityMatrix; }

  const Placement& Relative() const { return data_ ? data_->relative : kNowhere; }
  const Placement& Frozen() const { return IsFrozen() ? *data_->frozen : kNowhere; }
  Placement Absolute() const;
  // Whether nothing or only the position is frozen: the relative rotation and scale are the absolute ones then.
  bool IsFrozenUpright() const;

  void SetRelative(const Placement& relative);
  void SetFrozen(const Placement& frozen);
  void SetAbsolute(const Placement& absolute);

  int32_t Order() const { return data_ ? data_->order : kOrderHPB; }
  void SetOrder(int32_t order);  // the matrices stay

  // All of it as numbers, for files; false for what are none.
  std::vector<double> Numbers() const;
  bool SetNumbers(const std::vector<double>& numbers);

 private:
  struct Data {
    Placement relative;
    Matrix local = kIdentityMatrix;
    std::unique_ptr<Placement> frozen;  // null: none
    int32_t order = kOrderHPB;
  };
  static constexpr Placement kNowhere{};

  bool IsFrozen() const { return data_ && data_->frozen; }
  Data& Change() {
    if (!data_) data_ = std::make_unique<Data>();
    return *data_;
  }
  void Compose();

  std::unique_ptr<Data> data_;  // null: at the origin
};

}  // namespace host

#endif

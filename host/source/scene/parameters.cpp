#include "scene/parameters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "boundary/host.h"

namespace host {
namespace {

std::optional<int32_t> ValueTypeOf(int32_t dtype) {
  switch (dtype) {
    case DTYPE_GROUP:
      return HOST_DATA_NONE;
    case DTYPE_BOOL:
      return HOST_DATA_INT32;
    case DTYPE_COLOR:
      return HOST_DATA_VECTOR;
    case DTYPE_SUBCONTAINER:
      return HOST_DATA_CONTAINER;
    case DTYPE_LONG:
    case DTYPE_REAL:
    case DTYPE_TIME:
    case DTYPE_VECTOR:
    case DTYPE_MATRIX:
    case DTYPE_LLONG:
    case DTYPE_STRING:
    case DTYPE_FILENAME:
    case DTYPE_BASELISTLINK:
      return dtype;
    default:
      return std::nullopt;
  }
}

// What a parameter is without a default of its own.
Value ZeroOf(int32_t type) {
  if (type == HOST_DATA_CONTAINER) return Value(std::make_unique<BaseContainer>());
  if (type == HOST_DATA_MATRIX) {
    const Matrix identity = {{}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    return Value::Adopt(gedata::FromMatrix(&identity));
  }
  HostGeData zero{};
  zero.type = type;
  if (type == HOST_DATA_TIME) zero.value.time.denominator = 1;
  return Value::Adopt(zero);
}

std::optional<double> NumberOf(const BaseContainer& settings, int32_t id) {
  const HostGeData* data = container::FindData(&settings, id);
  const Value number = data ? Convert(*data, HOST_DATA_FLOAT) : Value();
  if (number.Data().type == HOST_DATA_NONE) return std::nullopt;
  return number.Data().value.real;
}

bool IsInteger(int32_t type) { return type == HOST_DATA_INT32 || type == HOST_DATA_INT64; }

// A number is out of order in every range.
bool Limit(double& number, const Parameter& parameter) {
  if (std::isnan(number)) return std::isinf(parameter.min) && std::isinf(parameter.max);
  number = std::clamp(number, parameter.min, parameter.max);
  return true;
}

int64_t Saturated(double number) {
  constexpr double kEnd = 9223372036854775808.0;  // one above the greatest
  if (number >= kEnd) return std::numeric_limits<int64_t>::max();
  return number < -kEnd ? std::numeric_limits<int64_t>::min() : int64_t(number);
}

int64_t Limited(int64_t number, const Parameter& parameter) {
  if (double(number) < parameter.min) return Saturated(std::ceil(parameter.min));
  return double(number) > parameter.max ? Saturated(std::floor(parameter.max)) : number;
}

int64_t Narrowed(int64_t number, int32_t type) {
  using Limits = std::numeric_limits<int32_t>;
  return type == HOST_DATA_INT32 ? std::clamp<int64_t>(number, Limits::min(), Limits::max()) : number;
}

}  // namespace

Parameter::Parameter(std::initializer_list<DescLevel> id, const DescLevel& inGroup,
                     const BaseContainer& withSettings)
    : depth(int32_t(id.size())), group(inGroup), settings(withSettings) {
  const HostGeData* dtype = container::FindData(&settings, DESC_DATATYPE);
  const auto type =
      dtype && dtype->type == HOST_DATA_INT32 ? ValueTypeOf(int32_t(dtype->value.integer)) : std::nullopt;
  if (!type) throw std::invalid_argument("the data type of a parameter is not known");
  valueType = *type;
  std::copy(id.begin(), id.end(), levels);
  levels[depth - 1].dtype = int32_t(dtype->value.integer);
  if (IsGroup()) return;
  if (IsInteger(valueType) || valueType == HOST_DATA_FLOAT || valueType == HOST_DATA_VECTOR) {
    const double least = NumberOf(settings, DESC_MIN).value_or(min);
    const double most = NumberOf(settings, DESC_MAX).value_or(max);
    if (least <= most) min = least, max = most;
  }
  const HostGeData* wanted = container::FindData(&settings, DESC_DEFAULT);
  Value fitting = Fit(wanted ? *wanted : ZeroOf(valueType).Data());
  if (fitting.Data().type == HOST_DATA_NONE)
    throw std::invalid_argument("the default of a parameter is of another type");
  standard = std::make_shared<const Value>(std::move(fitting));
}

Value Parameter::Fit(const HostGeData& value) const {
  HostGeData fitting = Convert(value, valueType).Release();
  bool isRight = true;
  if (IsInteger(fitting.type)) {
    fitting.value.integer = Narrowed(Limited(fitting.value.integer, *this), valueType);
  } else if (fitting.type == HOST_DATA_FLOAT) {
    isRight = Limit(fitting.value.real, *this);
  } else if (fitting.type == HOST_DATA_VECTOR) {
    Vector& vector = fitting.value.vector;
    isRight = Limit(vector.x, *this) && Limit(vector.y, *this) && Limit(vector.z, *this);
  } else if (fitting.type == HOST_DATA_TIME) {
    isRight = !std::isnan(fitting.value.time.numerator / fitting.value.time.denominator);
  }
  return isRight ? Value::Adopt(fitting) : Value();
}

Value Convert(const HostGeData& value, int32_t type) {
  if (value.type == type) return Value(value);
  if (!IsInteger(value.type)) return Value();
  if (type == HOST_DATA_FLOAT) return Value::Float(double(value.value.integer));
  if (!IsInteger(type)) return Value();
  return Value::Adopt({type, 0, {.integer = Narrowed(value.value.integer, type)}});
}

void Put(BaseContainer& container, int32_t id, const Value& value) {
  container::SetData(&container, id, &value.Data());
}

}  // namespace host

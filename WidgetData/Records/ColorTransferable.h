// One colour as the widget files carry it.
//
// ColorTransferable holds a colour's four device-RGB components, each a
// 64-bit number normally between 0 and 1 (nothing clamps them). All four
// keys are required in JSON. It compares and hashes field by field. A plain
// value: immutable once made, safe to share between threads.
#pragma once

#include <cstddef>

#include <nlohmann/json_fwd.hpp>

namespace kestrona {

struct ColorTransferable {
  double redComponent = 0;
  double greenComponent = 0;
  double blueComponent = 0;
  double alphaComponent = 0;

  friend bool operator==(const ColorTransferable&, const ColorTransferable&) = default;
};

void to_json(nlohmann::json& json, const ColorTransferable& color);
void from_json(const nlohmann::json& json, ColorTransferable& color);

}  // namespace kestrona

template <>
struct std::hash<kestrona::ColorTransferable> {
  std::size_t operator()(const kestrona::ColorTransferable& color) const noexcept;
};

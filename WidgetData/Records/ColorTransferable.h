// One colour as the widget files carry it.
//
// ColorTransferable holds a colour's four device-RGB components, each a
// 64-bit number normally between 0 and 1 (nothing clamps them). All four
// keys are required in JSON. It compares and hashes field by field.
//
// toTransferable() reads a colour's components in device RGB, after
// resolving a dynamic colour against the calling thread's current drawing
// appearance and converting a Display P3 one. A colour with no device-RGB
// form (a component that is not a finite number) ends the process with
// "Could not convert color to RGBA."; the palette's colours always convert.
// color() makes the device-independent colour of the four numbers as they
// stand.
//
// A plain value: immutable once made, safe to share between threads.
#pragma once

#include <cstddef>

#include <nlohmann/json_fwd.hpp>

#include "Platform/Color/Color.h"

namespace kestrona {

struct ColorTransferable {
  double redComponent = 0;
  double greenComponent = 0;
  double blueComponent = 0;
  double alphaComponent = 0;

  Color color() const;

  friend bool operator==(const ColorTransferable&, const ColorTransferable&) = default;
};

ColorTransferable toTransferable(const Color& color);

void to_json(nlohmann::json& json, const ColorTransferable& color);
void from_json(const nlohmann::json& json, ColorTransferable& color);

}  // namespace kestrona

template <>
struct std::hash<kestrona::ColorTransferable> {
  std::size_t operator()(const kestrona::ColorTransferable& color) const noexcept;
};

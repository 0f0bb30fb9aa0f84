// A font as a view asks for it: a size in points, a weight, a design and
// whether digits are drawn monospaced.
//
// A Font names no family: FontCatalog (FontCatalog.h) chooses the family
// from the design and the faces installed on the machine, so a view tree
// reads the same whatever fonts are present. Weights carry their numeric
// weight (100 to 900) as raw value, as font matching uses it.
//
// Threading: a plain value; any thread.
#pragma once

namespace kestrona {

class Font {
 public:
  enum class Weight : int {
    ultraLight = 100,
    thin = 200,
    light = 300,
    regular = 400,
    medium = 500,
    semibold = 600,
    bold = 700,
    heavy = 800,
    black = 900,
  };

  // The default design is the system's sans face; rounded is a face with
  // rounded stroke ends, used for durations.
  enum class Design { defaultDesign, rounded };

  // A font of size points. size must be positive and finite.
  static Font system(double size, Weight weight = Weight::regular, Design design = Design::defaultDesign);

  double size() const noexcept { return size_; }
  Weight weight() const noexcept { return weight_; }
  Design design() const noexcept { return design_; }
  bool hasMonospacedDigits() const noexcept { return monospacedDigit_; }

  Font withWeight(Weight weight) const;
  // The same font with digits of one width, so that a changing number does
  // not shift the text beside it. Only faces with tabular figures can do
  // this (the sans faces of FontCatalog can; its rounded faces cannot, and
  // keep their proportional digits).
  Font monospacedDigit() const;

  friend bool operator==(const Font&, const Font&) = default;

 private:
  Font(double size, Weight weight, Design design) : size_(size), weight_(weight), design_(design) {}

  double size_;
  Weight weight_;
  Design design_;
  bool monospacedDigit_ = false;
};

}  // namespace kestrona

#include "SharedWidgets/Views/Chart/LabeledValueView.h"

#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona {

View LabeledValueView::body() const {
  return VStack(HorizontalAlignment::leading, 0,
                {
                    Text(labelText)
                        .font(Font::system(10, Font::Weight::bold))
                        .foregroundColor(NamedColors::secondaryLabel())
                        .lineLimit(lineLimit),
                    Text(valueText)
                        .font(Font::system(22, Font::Weight::medium))
                        .foregroundColor(Color::white())
                        .lineLimit(lineLimit),
                });
}

}  // namespace kestrona

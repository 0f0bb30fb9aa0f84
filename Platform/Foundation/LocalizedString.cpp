#include "Platform/Foundation/LocalizedString.h"

namespace kestrona {

std::string localizedString(std::string_view /*key*/, std::string_view defaultValue,
                            std::string_view /*comment*/) {
  return std::string(defaultValue);
}

}  // namespace kestrona

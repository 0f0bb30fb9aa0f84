#include "Platform/Foundation/Error.h"

namespace kestrona {

Error::Error(std::string domain, std::int64_t code, std::string description, ErrorUserInfo userInfo,
             std::shared_ptr<const Error> underlying)
    : domain_(std::move(domain)),
      code_(code),
      description_(std::move(description)),
      userInfo_(std::move(userInfo)),
      underlying_(std::move(underlying)),
      what_(description_ + " (" + domain_ + " " + std::to_string(code_) + ")") {}

}  // namespace kestrona

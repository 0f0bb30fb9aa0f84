#include "SharedCore/Model/Tracking/BillingStatus.h"

#include "Platform/Foundation/LocalizedString.h"
#include "SharedCore/Support/Colors/ColorHexParsing.h"
#include "SharedCore/Support/Colors/NamedColors.h"

namespace kestrona {

std::string_view enDescription(BillingStatus status) {
  switch (status) {
    case BillingStatus::unbilled:
      return "unbilled";
    case BillingStatus::billed:
      return "billed";
    case BillingStatus::paid:
      return "paid";
  }
  return "unbilled";
}

std::string description(BillingStatus status) {
  constexpr std::string_view comment = "Billing status of a time entry";
  switch (status) {
    case BillingStatus::unbilled:
      return localizedString("timeEntry.billingStatus.unbilled", "Unbilled", comment);
    case BillingStatus::billed:
      return localizedString("timeEntry.billingStatus.billed", "Billed", comment);
    case BillingStatus::paid:
      return localizedString("timeEntry.billingStatus.paid", "Paid", comment);
  }
  return localizedString("timeEntry.billingStatus.unbilled", "Unbilled", comment);
}

Color color(BillingStatus status) {
  switch (status) {
    case BillingStatus::unbilled:
      break;
    case BillingStatus::billed:
      return colorFromHexString("#FF7601");
    case BillingStatus::paid:
      return colorFromHexString("#37B403");
  }
  return NamedColors::secondaryLabel();
}

}  // namespace kestrona

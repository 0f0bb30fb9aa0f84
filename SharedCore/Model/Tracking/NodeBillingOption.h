// What a task or folder says about billing (Node::BillingOption): it follows
// its parent, which is or is not billable, or it states billable or
// non-billable itself. Options compare equal by case and payload.
// description() is the localised text that a billing menu shows.
// A plain value, thread-safe.
#pragma once

#include <string>
#include <variant>

namespace kestrona {

class NodeBillingOption {
 public:
  struct Inherited {
    bool isBillable = false;
    friend bool operator==(const Inherited&, const Inherited&) = default;
  };
  struct Billable {
    friend bool operator==(const Billable&, const Billable&) = default;
  };
  struct NonBillable {
    friend bool operator==(const NonBillable&, const NonBillable&) = default;
  };
  using Case = std::variant<Inherited, Billable, NonBillable>;

  static NodeBillingOption inherited(bool isBillable) { return NodeBillingOption(Inherited{isBillable}); }
  static NodeBillingOption billable() { return NodeBillingOption(Billable{}); }
  static NodeBillingOption nonBillable() { return NodeBillingOption(NonBillable{}); }

  const Case& value() const noexcept { return case_; }
  // True for billable and nonBillable, false for both inherited cases.
  bool isBillableSet() const noexcept { return !std::holds_alternative<Inherited>(case_); }
  std::string description() const;

  friend bool operator==(const NodeBillingOption&, const NodeBillingOption&) = default;

 private:
  explicit NodeBillingOption(Case value) : case_(value) {}

  Case case_;
};

}  // namespace kestrona

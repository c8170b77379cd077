#pragma once

#include <map>
#include <vector>

#include "supervisor/admin/EngineView.h"

namespace supervisor::admin {

/// An engine that shows what a test has put into it.
class FakeEngine final : public EngineView {
 public:
  std::vector<dme::ObjectView> model(const mo::Dn& dn) const override {
    const auto found = models_.find(dn.text().str());
    return found == models_.end() ? std::vector<dme::ObjectView>() : found->second;
  }
  std::vector<dme::SlotView> slots() const override { return slots_; }
  std::optional<dme::SlotView> slot(std::uint32_t number) const override {
    for (const dme::SlotView& slot : slots_) {
      if (slot.slot == number) {
        return slot;
      }
    }
    return std::nullopt;
  }
  dme::EngineStatus status() const override { return status_; }

  std::map<std::string, std::vector<dme::ObjectView>> models_;
  std::vector<dme::SlotView> slots_;
  dme::EngineStatus status_;
};

}  // namespace supervisor::admin

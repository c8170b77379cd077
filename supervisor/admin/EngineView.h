#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "dme/Engine.h"

namespace supervisor::admin {

/// What the interface reads of the engine: a seam, so that its resources can be tested without one.
/// Every call is thread-safe and quick.
class EngineView {
 public:
  virtual ~EngineView() = default;

  virtual std::vector<dme::ObjectView> model(const mo::Dn& dn) const = 0;
  virtual std::vector<dme::SlotView> slots() const = 0;
  virtual std::optional<dme::SlotView> slot(std::uint32_t number) const = 0;
  virtual dme::EngineStatus status() const = 0;
};

/// The engine of this process, which outlives this.
class EmbeddedEngine final : public EngineView {
 public:
  explicit EmbeddedEngine(const dme::Engine& engine) : engine_(engine) {}

  std::vector<dme::ObjectView> model(const mo::Dn& dn) const override { return engine_.model(dn); }
  std::vector<dme::SlotView> slots() const override { return engine_.slots(); }
  std::optional<dme::SlotView> slot(std::uint32_t number) const override {
    return engine_.slot(number);
  }
  dme::EngineStatus status() const override { return engine_.status(); }

 private:
  const dme::Engine& engine_;
};

}  // namespace supervisor::admin

#pragma once

namespace mo {

class Mit;

/// Puts into a new tree what every tree has.
class TreeInitializer {
 public:
  /// The process's one; null for none. Set at start-up, owned by who set it.
  static TreeInitializer* INSTANCE;

  virtual ~TreeInitializer() = default;
  virtual void initialize(Mit& tree) = 0;
};

/// Gives a tree its root.
class MoTreeInitializer final : public TreeInitializer {
 public:
  static constexpr unsigned kRootClass = 1;

  void initialize(Mit& tree) override;
};

}  // namespace mo

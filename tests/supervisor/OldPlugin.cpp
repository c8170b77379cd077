#include "framework/proc/ServicePlugin.h"

extern "C" const proc::ServicePlugin* zanServicePlugin() {
  static const proc::ServicePlugin plugin{0,       "old",   nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr};
  return &plugin;
}

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

#include "framework/base/String.h"
#include "framework/core_log/Log.h"
#include "framework/finj/FinjManager.h"
#include "framework/mo/Mo.h"
#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/XMLConverter.h"
#include "framework/proc/Stimulus.h"

// What every executor does: carry one command of the management engine to the agent of one blade
// and tell the engine, through the stimulus, how that went.

namespace zan_serviceOrchAG {

/// What names one executor.
struct ExecutorNames {
  const char* function;  ///< as it stands in the log
  const char* hookStem;  ///< the end of its fault injection hooks' names; null when it has none
  const char* prefix;    ///< of its failure texts: "STOPAPP"
};

/// Which of the log's lines tells that a required element has no value. The forms differ in a
/// blank; people search for them as they are.
enum class MissingLine : std::uint8_t {
  kSlot,           ///< "PREFIX: slot[3]: ELEMENT : missing"
  kSpaceInstance,  ///< "PREFIX: slot[3]: appInstanceId [a1]: ELEMENT : missing"
  kInstance,       ///< "PREFIX: slot[3]: appInstanceId[a1]: ELEMENT : missing"
  kInstanceFirst,  ///< "PREFIX: appInstanceId[a1]: slot[3]: ELEMENT : missing"
  kForInstance,    ///< "PREFIX: ELEMENT: missing for appInstanceId[a1]."
  kElement         ///< "PREFIX: ELEMENT: missing"
};

/// An element without which a command is not sent.
struct RequiredElement {
  const base::String& name;
  base::String value;
  MissingLine line;
  const char* failure;  ///< what the engine is told when it is missing
};

/// A command's document while it is built.
class CommandDocument {
 public:
  explicit CommandDocument(const base::String& root) : root_(converter_.xmlAddRootNode(root, "")) {}

  noxxml::XMLConverter& converter() { return converter_; }
  noxxml::AgElement* root() { return root_; }
  std::string text() const { return noxxml::XMLConverter::xmlSerialize(root_); }

 private:
  noxxml::AgFactory factory_;
  noxxml::XMLConverter converter_{&factory_};
  noxxml::AgElement* const root_;
};

/// Adds an element below `parent` and returns it. A value that is empty, "0" or "::" counts as not
/// set: nothing is added then, and null returned.
noxxml::AgElement* createChildNode(base::String name, base::String value, noxxml::AgElement* parent,
                                   noxxml::XMLConverter& converter);

/// The cause that the engine is told for a status code of an exchange with a blade.
proc::Stimulus::ResultBits statusToResultBits(unsigned int status);

/// What takes a command to a blade: sendMsg. Another function may stand here before the first
/// executor runs.
using SendCommand = unsigned int (*)(std::string slot, std::string document, std::string command);
extern SendCommand sendCommand;

/// One run of an executor, from its first hook to its last. Used by one thread.
class ExecutorFrame {
 public:
  static constexpr int kTrace = 1;
  static constexpr int kDocument = 4;
  static constexpr int kNotice = 5;
  static constexpr int kError = 8;

  /// Both are borrowed. The outcome is reported on `stage`.
  ExecutorFrame(const ExecutorNames& names, proc::Stimulus& stage) : names_(names), stage_(stage) {}
  ExecutorFrame(const ExecutorFrame&) = delete;
  ExecutorFrame& operator=(const ExecutorFrame&) = delete;

  /// Runs the hooks before the work. False when one of them ends the executor; what it wants to be
  /// reported has been. May end the process: that is an activity too.
  [[nodiscard]] bool enter();

  template <typename... Args>
  void log(int level, core_log::FormatString<std::type_identity_t<Args>...> format,
           Args... args) const {
    core_log::logPrintf(names_.function, core_log::serviceLevel(), level, format, args...);
  }

  /// Reports a failure that was found before anything was sent.
  void refuse(const base::String& text);

  /// The stage's target as one of the model's class T. When it is none, `line` is logged, `failure`
  /// reported, and null returned.
  template <class T>
  T* target(mo::Mo* object, const char* line, const char* failure) {
    T* const wanted = mo::checkCast<T>(object);
    if (wanted == nullptr) {
      log(kError, "%s", line);
      refuse(failure);
    }
    return wanted;
  }

  /// Adds the element below `parent`. Null when it has no value, which has been logged and
  /// reported.
  [[nodiscard]] noxxml::AgElement* addRequired(CommandDocument& document, noxxml::AgElement* parent,
                                               const std::string& slot,
                                               const base::String& appInstanceId,
                                               const RequiredElement& element);
  /// Adds the elements below the root. False after the first that has no value, which has been
  /// logged and reported.
  [[nodiscard]] bool addRequired(CommandDocument& document, const std::string& slot,
                                 const base::String& appInstanceId,
                                 std::span<const RequiredElement> elements);

  /// Sends the document and waits for the blade's answer. True when the blade took the command.
  [[nodiscard]] bool send(const std::string& slot, const std::string& document,
                          const std::string& command);

  /// After send() and the line that tells of its outcome: reports a failed send, and runs the hook
  /// after the work.
  void leave();

 private:
  /// What a hook wants of the executor.
  enum class Wish : std::uint8_t { kGoOn, kReturn, kOwnAction };
  Wish runHook(const char* kind) const;
  void logMissing(const RequiredElement& element, const std::string& slot,
                  const base::String& appInstanceId) const;

  const ExecutorNames& names_;
  proc::Stimulus& stage_;
  const finj::FinjManager::Frame bindings_;
  std::int32_t lBits_ = 0;  // what an injected failure reports
  unsigned int status_ = 0;
};

}  // namespace zan_serviceOrchAG

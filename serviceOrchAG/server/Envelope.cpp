#include "serviceOrchAG/server/Envelope.h"

#include "serviceOrchAG/svc/Vocabulary.h"

namespace zan_serviceOrchAG::envelope {

const std::string& contentTypeAndVersion() {
  // Never freed, as the words that it is made of: workers use it to the last.
  static const std::string& text =
      *new std::string(words().contentType + ":" + words().contentVersion);
  return text;
}

}  // namespace zan_serviceOrchAG::envelope

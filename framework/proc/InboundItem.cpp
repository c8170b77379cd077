#include "framework/proc/InboundItem.h"

#include "framework/proc/Stimulus.h"
#include "framework/proc/Svc.h"

namespace proc {

InboundItem::InboundItem(Svc& svc, const unsigned char* bytes, std::size_t size)
    : svc_(svc), bytes_(bytes, bytes + size) {
  base::IBioStream stream(bytes_.data(), bytes_.size());
  StimulusHeader header;
  isReadable_ = header.deserialize(stream);
  isOrdered_ = header.bulk() == Stimulus::kNoBulk;
  key_ = {header.classId(), header.type(), header.cookie()};
}

void InboundItem::run() {
  hasSucceeded_ = svc_.handle(bytes_.data(), bytes_.size());
}

}  // namespace proc

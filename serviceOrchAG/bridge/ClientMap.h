#pragma once

#include <map>
#include <string>

#include "framework/os/CriticalSection.h"

namespace zan_serviceOrchAG {

class SMAClient;

/// Guards ClientMap, the status of every client and every client's channel. A command holds it for
/// its whole exchange with the blade, up to ten seconds, so that commands go out one at a time.
/// Re-entrant. Never destroyed: workers use it until the process is gone.
extern os::CriticalSection& Critical_section_lock;

/// The registered blades, by slot number in decimal; guarded by Critical_section_lock. A client
/// enters itself when it is made and erases itself when it is deleted. Never destroyed.
extern std::map<std::string, SMAClient*>& ClientMap;

// The slot is the text under which the blade registered, compared byte for byte: "01" is not "1".
// All of these take the lock and may be called from any thread, also by its holder.

/// True when the slot has a client.
bool is_bladeRegistered(const std::string& slot);

/// True when the slot has a client whose blade was found valid.
bool getBladeStatus(const std::string& slot);

/// Sets whether the slot's blade is valid. No effect on a slot without a client.
void setBladeStatus(const std::string& slot, bool status);

/// Deletes the slot's client. False when it has none.
bool removeBladeMapEntry(const std::string& slot);

/// Makes and registers a client for a blade that listens at `ip` and `port`; of a slot that has a
/// client already, only the status is set and the address is kept. The port is decimal text; what
/// is no number counts as 0. Texts of more than 255 bytes, and more than 1024 names that no slot of
/// a chassis has, are not registered: only a line in the log tells. Throws what the message layer
/// throws for an unusable address; the slot has no client then.
void createSMAClient(std::string slot, std::string ip, std::string port, bool status);

}  // namespace zan_serviceOrchAG

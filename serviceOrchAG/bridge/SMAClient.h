#pragma once

#include <memory>
#include <string>

namespace msglyr {
class AsyncRouterDealerChannel;
}

namespace zan_serviceOrchAG {

/// The gateway's way to one blade: a channel to the blade's agent on which commands go out one
/// after the other.
///
/// Made on the heap by createSMAClient and deleted by the registry only. A client enters itself
/// into ClientMap; whoever finds it there uses it under Critical_section_lock, which guards every
/// member. Texts that are passed by reference are not changed.
class SMAClient {
 public:
  /// Takes the slot's place in ClientMap, deleting a client that another registration put there
  /// meanwhile, and connects in the background. Throws what the message layer throws for an
  /// unusable address; the slot then has no client.
  SMAClient(std::string& slot, std::string& ip, unsigned int port, bool status);
  /// Closes the channel and erases the slot's entry of ClientMap. Throws nothing.
  ~SMAClient();
  SMAClient(const SMAClient&) = delete;
  SMAClient& operator=(const SMAClient&) = delete;

  /// Whether the blade was found valid. The caller holds the lock.
  bool status() const { return status_; }
  void setStatus(bool status) { status_ = status; }

  /// Sends one command and waits up to ten seconds for the answer, which is logged and dropped.
  /// Returns 100 when an answer of five parts came, or 576 to 579. A failure of the channel is a
  /// return value, never an exception. The caller holds the lock.
  unsigned int send(std::string& subject, std::string& message);

  /// Points the channel at tcp://ip:port. Only logs when there is no channel. Throws what the
  /// message layer throws for an unusable address.
  void setClientChannel(std::string& slot, std::string& ip, unsigned int port);

  /// Replaces the channel by a fresh one to the same address, so that an answer to an earlier
  /// command can no longer arrive. When that throws, the client is left without a channel.
  void resetClientChannel();

 private:
  using Channel = msglyr::AsyncRouterDealerChannel;

  /// Makes a channel and points it at the blade; on an exception there is none.
  void openChannel();
  Channel* channel() const { return channelHolder_ ? channelHolder_->get() : nullptr; }

  // All guarded by Critical_section_lock.
  bool status_;
  std::string slot_;
  std::string ip_;
  unsigned int port_;
  unsigned int messageCounter_ = 0;  // of the last command; wraps, and outlives the channel
  std::unique_ptr<std::unique_ptr<Channel>> channelHolder_;
};

/// Sends a command document to the blade in a slot and waits up to ten seconds for its answer.
/// `command` is the subject's command, as "formatDisk". Returns 100 when the blade answered, 580
/// when the slot has no client, 581 when its blade is not valid and the command is not
/// "formatDisk", or 576 to 579 when the exchange failed; the channel is then a fresh one. Commands
/// of all blades go out one at a time, so the call also waits for those before it. Any thread.
unsigned int sendMsg(std::string slot, std::string message, std::string command);

}  // namespace zan_serviceOrchAG

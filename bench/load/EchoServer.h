#pragma once

#include <string>

// Servers that send back what they get. They are run in a process of their own, by ServerProcess.

namespace load {

/// Takes a message, all frames of it, and sends it back, until the socket fails. `socket` is one of
/// the transport library's.
void echoForever(void* socket);

/// Binds a ROUTER of the context to a free port of loopback; ends the process when that fails.
/// `endPoint` takes where it can be reached.
void* bindRouter(void* context, std::string& endPoint);

/// Prints the end point as one line, waits for the end of the standard input and ends the process.
[[noreturn]] void announceAndWait(const std::string& endPoint);

/// One thread that echoes on a ROUTER: the floor of the transport.
[[noreturn]] void serveRouter();

}  // namespace load

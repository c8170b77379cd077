#pragma once

namespace request_path {

/// The references. Each prints its end point as one line on its standard output and
// serves until its standard input ends; they are run in a process of their own.

int serveProxy();   // ROUTER, zmq_proxy, DEALER, five workers that echo
int serveRouter();  // one thread that echoes on a ROUTER: the floor of the transport
int serveGrpc();    // gRPC's synchronous server with an empty handler

// Prints the end point, waits for the end of the standard input and ends the process.
[[noreturn]] void announceAndWait(const char* endPoint);

}  // namespace request_path

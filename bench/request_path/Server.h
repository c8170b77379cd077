#pragma once

namespace request_path {

// The references. Each prints its end point as one line on its standard output and
// serves until its standard input ends; they are run in a process of their own.

[[noreturn]] void serveProxy();  // ROUTER, zmq_proxy, DEALER, five workers that echo
[[noreturn]] void serveGrpc();   // gRPC's synchronous server with an empty handler

}  // namespace request_path

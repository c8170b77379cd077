#include <grpcpp/grpcpp.h>

#include <memory>
#include <string>

#include "bench/load/EchoServer.h"
#include "bench/request_path/GrpcLoad.h"
#include "bench/request_path/Server.h"
#include "echo.grpc.pb.h"

namespace request_path {
namespace {

using Clock = std::chrono::steady_clock;

class EmptyHandler final : public Echo::Service {
  grpc::Status Handle(grpc::ServerContext*, const Request*, Reply*) override {
    return grpc::Status::OK;
  }
};

// One request under way; starts the next one when it is answered.
struct Call {
  Echo::Stub* stub = nullptr;
  std::unique_ptr<grpc::ClientContext> context;
  std::unique_ptr<grpc::ClientAsyncResponseReader<Reply>> reader;
  Reply reply;
  grpc::Status status;
  Clock::time_point started;

  void start(const Request& request, grpc::CompletionQueue& queue) {
    context = std::make_unique<grpc::ClientContext>();
    started = Clock::now();
    reader = stub->AsyncHandle(context.get(), request, &queue);
    reader->Finish(&reply, &status, this);
  }
};

class GrpcLoad {
 public:
  explicit GrpcLoad(const load::Plan& plan) : plan_(plan) {
    request_.set_body(std::string(130, 'x'));
    grpc::ChannelArguments arguments;
    arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);  // a connection for each client
    for (unsigned i = 0; i < plan.shape.clients; ++i) {
      stubs_.push_back(Echo::NewStub(
          grpc::CreateCustomChannel(plan.endPoint, grpc::InsecureChannelCredentials(), arguments)));
    }
  }

  load::Result run() {
    calls_.resize(std::size_t{plan_.shape.clients} * plan_.shape.outstanding);
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      calls_[i].stub = stubs_[i / plan_.shape.outstanding].get();
      calls_[i].start(request_, queue_);
    }
    runUntil(Clock::now() + plan_.warmUp);
    result_.nanos.clear();
    result_.nanos.reserve(1 << 20);
    result_.requests = 0;
    const double cpuBefore = load::cpuMicros(plan_.serverClock);
    const Clock::time_point begin = Clock::now();
    runUntil(begin + plan_.measured);
    result_.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    result_.serverCpuMicros =
        (load::cpuMicros(plan_.serverClock) - cpuBefore) / static_cast<double>(result_.requests);
    drain();
    return std::move(result_);
  }

 private:
  void runUntil(Clock::time_point end) {
    void* tag = nullptr;
    bool ok = false;
    while (Clock::now() < end && queue_.Next(&tag, &ok)) {
      Call& call = *static_cast<Call*>(tag);
      if (!call.status.ok()) {
        result_.failure = call.status.error_message();
      }
      result_.nanos.push_back(static_cast<std::uint32_t>((Clock::now() - call.started).count()));
      ++result_.requests;
      call.start(request_, queue_);
    }
  }

  void drain() {
    for (Call& call : calls_) {
      call.context->TryCancel();
    }
    queue_.Shutdown();
    void* tag = nullptr;
    bool ok = false;
    while (queue_.Next(&tag, &ok)) {
    }
  }

  const load::Plan& plan_;
  Request request_;
  grpc::CompletionQueue queue_;
  std::vector<std::unique_ptr<Echo::Stub>> stubs_;
  std::vector<Call> calls_;
  load::Result result_;
};

}  // namespace

void serveGrpc() {
  EmptyHandler handler;
  grpc::ServerBuilder builder;
  int port = 0;
  builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port);
  builder.RegisterService(&handler);
  const std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  load::announceAndWait("127.0.0.1:" + std::to_string(port));
}

load::Result loadGrpc(const load::Plan& plan) {
  return GrpcLoad(plan).run();
}

}  // namespace request_path

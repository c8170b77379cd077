#include "agctl/CurlExchanges.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <system_error>

#include "framework/os/SocketAddress.h"

namespace agctl {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The library's state for the process.
void initialiseOnce() {
  static const CURLcode result = curl_global_init(CURL_GLOBAL_NOTHING);
  if (result != CURLE_OK) {
    throw std::runtime_error(curl_easy_strerror(result));
  }
}

TransportError::Kind kindOf(CURLcode code, bool wasSent) {
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_FILESIZE_EXCEEDED:
      return TransportError::Kind::kNotHttp;
    default:
      return wasSent ? TransportError::Kind::kNoAnswer : TransportError::Kind::kNotConnected;
  }
}

}  // namespace

/// One request under way.
class CurlExchanges::Transfer {
 public:
  Transfer(std::size_t key, const Request& request, const std::string& socket)
      : key_(key), body_(request.body), address_(socket), easy_(curl_easy_init()) {
    if (easy_ == nullptr) {
      throw std::bad_alloc();
    }
    // Whatever the body, no question whether it may be sent.
    headers_ = curl_slist_append(headers_, "Expect:");
    headers_ = curl_slist_append(headers_, "Accept: application/json");
    set(CURLOPT_UNIX_SOCKET_PATH, address_.path().c_str());
    set(CURLOPT_URL, ("http://zedd" + request.target).c_str());
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_PROTOCOLS_STR, "http");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_PROXY, "");
    set(CURLOPT_NOSIGNAL, 1L);
    // A kept connection may have been closed meanwhile, and no order goes out twice.
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(request.within.count())));
    set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
    if (request.method != "GET" && request.method != "DELETE") {
      headers_ = curl_slist_append(headers_, "Content-Type: application/json");
      set(CURLOPT_POSTFIELDS, body_.c_str());
      set(CURLOPT_POSTFIELDSIZE, static_cast<long>(body_.size()));
    }
    set(CURLOPT_HTTPHEADER, headers_);
    set(CURLOPT_ERRORBUFFER, error_.data());
    set(CURLOPT_WRITEFUNCTION, &Transfer::onBytes);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_PRIVATE, this);
  }
  ~Transfer() {
    curl_easy_cleanup(easy_);
    curl_slist_free_all(headers_);
  }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  CURL* easy() const { return easy_; }
  std::size_t key() const { return key_; }

  Reply reply(CURLcode code) {
    if (code == CURLE_OK) {
      Response response;
      curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &response.status);
      response.body = std::move(received_);
      return response;
    }
    if (isTooLong_) {
      return tl::unexpected(
          TransportError{TransportError::Kind::kNotHttp, "the answer is longer than 64 MiB"});
    }
    long sent = 0;
    curl_easy_getinfo(easy_, CURLINFO_REQUEST_SIZE, &sent);
    return tl::unexpected(TransportError{kindOf(code, sent > 0), causeOf(code)});
  }

 private:
  template <class Value>
  void set(CURLoption option, Value value) {
    if (const CURLcode code = curl_easy_setopt(easy_, option, value); code != CURLE_OK) {
      throw std::runtime_error(curl_easy_strerror(code));
    }
  }
  std::string causeOf(CURLcode code) const {
    if (address_.error() != 0) {
      return std::generic_category().message(address_.error());
    }
    long number = 0;
    curl_easy_getinfo(easy_, CURLINFO_OS_ERRNO, &number);
    if (code == CURLE_COULDNT_CONNECT && number != 0) {
      return std::generic_category().message(static_cast<int>(number));
    }
    return error_.front() != '\0' ? error_.data() : curl_easy_strerror(code);
  }
  static std::size_t onBytes(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    if (self.received_.size() + size * count > kMostBytes) {
      self.isTooLong_ = true;
      return 0;
    }
    self.received_.append(bytes, size * count);
    return size * count;
  }

  const std::size_t key_;
  const std::string body_;
  const os::SocketAddress address_;
  CURL* easy_;
  curl_slist* headers_ = nullptr;
  std::array<char, CURL_ERROR_SIZE> error_{};
  std::string received_;
  bool isTooLong_ = false;
};

CurlExchanges::CurlExchanges(std::string socket, int interrupt)
    : socket_(std::move(socket)), interrupt_(interrupt) {
  initialiseOnce();
  multi_ = curl_multi_init();
  if (multi_ == nullptr) {
    throw std::bad_alloc();
  }
}

CurlExchanges::~CurlExchanges() {
  clear();
  curl_multi_cleanup(multi_);
}

void CurlExchanges::start(std::size_t key, const Request& request) {
  transfers_.push_back(std::make_unique<Transfer>(key, request, socket_));
  curl_multi_add_handle(multi_, transfers_.back()->easy());
}

std::vector<Exchanges::Finished> CurlExchanges::wait(milliseconds most) {
  const auto deadline = Clock::now() + most;
  while (true) {
    int running = 0;
    curl_multi_perform(multi_, &running);
    auto finished = takeFinished();
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (!finished.empty() || left.count() <= 0) {
      return finished;
    }
    curl_waitfd interrupt{interrupt_, CURL_WAIT_POLLIN, 0};
    curl_multi_poll(multi_, &interrupt, interrupt_ < 0 ? 0 : 1, static_cast<int>(left.count()),
                    nullptr);
    if (interrupt.revents != 0) {
      return {};
    }
  }
}

std::vector<Exchanges::Finished> CurlExchanges::takeFinished() {
  std::vector<Finished> finished;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
    if (message->msg != CURLMSG_DONE) {
      continue;
    }
    const CURLcode code = message->data.result;
    const auto found =
        std::find_if(transfers_.begin(), transfers_.end(),
                     [message](const auto& each) { return each->easy() == message->easy_handle; });
    curl_multi_remove_handle(multi_, (*found)->easy());
    finished.push_back({(*found)->key(), (*found)->reply(code)});
    transfers_.erase(found);
  }
  return finished;
}

void CurlExchanges::clear() {
  for (const auto& transfer : transfers_) {
    curl_multi_remove_handle(multi_, transfer->easy());
  }
  transfers_.clear();
}

}  // namespace agctl

#pragma once

#include <map>
#include <string>
#include <vector>

namespace supervisor::admin {

/// A request as the handlers see it: decoded, bounded and checked against its route.
struct Request {
  std::string method;                        ///< "GET"; a HEAD arrives as the GET it stands for
  std::string target;                        ///< as it was sent: "/api/v1/model?dn=sys"
  std::vector<std::string> parameters;       ///< what the pattern's {steps} matched, in order
  std::map<std::string, std::string> query;  ///< fields that the route knows, each at most once
  std::string contentType;
  std::string body;
};

/// What goes back to the client.
struct Response {
  unsigned status = 200;
  std::string contentType = "application/json";
  std::string body;
  std::string allow;          ///< the Allow field; empty for none
  std::string location = {};  ///< the Location field: what was made; empty for none
};

}  // namespace supervisor::admin

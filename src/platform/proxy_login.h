// Requests in a person's name: through the person's proxy, with the name and password for it.
#pragma once

#include "brenta/network.h"
#include "platform/http_client.h"

namespace brenta {

/// HttpGet through the proxies that the manager knows. Where they want a name and password, those come from
/// CWinHTTP::GetProxyAuthentication; if they are refused, the person is asked anew, three times at most.
HttpResult HttpGetThroughProxy(HttpRequest request, CNetworkManager& manager, HttpSink& sink);

}  // namespace brenta

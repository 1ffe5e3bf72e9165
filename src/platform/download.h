// Downloading a file in a person's name.
#pragma once

#include "brenta/framework.h"
#include "brenta/network.h"
#include "platform/http_client.h"

namespace brenta {

/// DownloadFile (brenta/http.h) within other limits. `url` and `file` are not empty.
bool DownloadWithin(const HttpLimits& limits, const char* url, const char* file, CNetworkManager& manager,
                    CProgressCtrl* progress);

}  // namespace brenta

// The update check: what the server's answer means, and one check from the request to the stored values.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "brenta/network.h"
#include "platform/http_client.h"

namespace brenta {

/// What the server offers, as its answer has it.
struct UpdateOffer {
    std::string build;  ///< a version text (brenta/system.h)
    std::string installString;
    std::string size;
    std::string installArguments;
};

/// Reads an answer:
///
///     answer    = { field separator }          field = key value
///     key       = "build=" | "install=" | "size=" | "installargs="
///     separator = blank | tab | ";" | "&" | line break
///
/// A key counts only at the start and behind a separator, so that an address may hold "size=" elsewhere. A
/// value ends before the next key or at a line break, without the separators there; behind a line break comes
/// a key or nothing. Each key stands once, "build=" must be there, and no value has control characters or
/// more than 259 bytes. False, and `offer` as it was, for every other text.
bool ParseUpdateAnswer(std::string_view answer, UpdateOffer& offer);

/// The limits of a check.
HttpLimits UpdateLimits();

/// Asks the server at `server` ("http://host:port" or "host:port") and stores what it offers. Shows a message
/// on failure, unless stopped meanwhile.
bool CheckForUpdate(const std::string& server, CNetworkManager& manager, const HttpLimits& limits,
                    const std::atomic<bool>& stop);

/// Waits until no check runs.
void WaitForUpdateCheck();

}  // namespace brenta

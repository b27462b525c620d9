#pragma once
// The URL an upload is sent to, made fit for the wire.

#include <optional>
#include <string>
#include <string_view>

namespace brenmoor::soap {

// `url` taken apart with libcurl's URL parser and put together again: http or https only, with a
// host; user and password left out (they are never sent); in the path and query, every byte that
// may not stand in a request target percent-encoded (see docs/protocol.md, "Uploads"). The query
// stays on the request path. nullopt when the URL cannot be used.
std::optional<std::string> uploadUrl(std::string_view url);

}  // namespace brenmoor::soap

// The values of Authorization headers: Basic (RFC 7617) and Digest (RFC 2617 without qop).
//
//   response = MD5(HA1 ":" uri ":" HA2)
//   HA1      = MD5(user ":" password ":" realm)     in this order, as meant; not RFC 2617's
//   HA2      = MD5(nonce ":" method)
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tintoral {

// The request that an authorisation is for.
struct HttpTarget {
    std::string_view method;
    std::string_view location;
};

// The answer to a challenge (the value of a WWW-Authenticate header); nothing for a scheme other
// than Basic and Digest.
std::optional<std::string> authorizationValue(std::string_view challenge, std::string_view user,
                                              std::string_view password, HttpTarget target);

// A user's password, or nothing for a user who is not known.
using PasswordOf = std::function<std::optional<std::string>(std::string_view user)>;

// What a responder asked for.
struct HttpChallenge {
    std::string_view realm;
    std::string_view nonce;
};

// The value of an Authorization header proves a user's password; for Digest, under this challenge.
bool authorizationHolds(std::string_view authorization, HttpTarget target, HttpChallenge challenge,
                        const PasswordOf& passwordOf);

}  // namespace tintoral

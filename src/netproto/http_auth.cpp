#include "netproto/http_auth.h"

#include "netproto/base64.h"
#include "netproto/md5.h"
#include "support/byte_reader.h"
#include "support/text.h"

namespace tintoral {
namespace {

using std::string_view;

constexpr string_view kBasic = "basic";
constexpr string_view kDigest = "digest";

// Colons between.
std::string joined(string_view a, string_view b) {
    return std::string(a).append(":").append(b);
}

// The text between the first two double quotes after the word.
std::optional<string_view> quotedAfter(string_view text, string_view word) {
    const auto rest = textAfter(text, word);
    return rest ? textBetween(*rest, "\"", '"') : std::nullopt;
}

string_view quotedOrEmpty(string_view text, string_view word) {
    return quotedAfter(text, word).value_or(string_view());
}

void addQuoted(std::string& value, string_view key, string_view content) {
    if (!value.ends_with(' ')) value += ", ";
    value.append(key).append("=\"").append(content).append("\"");
}

std::string basicValue(string_view user, string_view password) {
    std::string encoded;
    EncodeBase64(joined(user, password), encoded);
    return "Basic " + encoded;
}

std::string digestResponse(string_view user, string_view password, HttpChallenge challenge,
                           HttpTarget target) {
    // Password before realm, as meant (RFC 2617 has the realm first).
    const std::string ha1 = md5Hex(joined(joined(user, password), challenge.realm));
    const std::string ha2 = md5Hex(joined(challenge.nonce, target.method));
    return md5Hex(joined(joined(ha1, target.location), ha2));
}

std::string digestValue(string_view text, string_view user, string_view password,
                        HttpTarget target) {
    const HttpChallenge challenge{quotedOrEmpty(text, "realm"), quotedOrEmpty(text, "nonce")};
    const auto opaque = quotedAfter(text, "opaque");
    std::string value = "Digest ";
    addQuoted(value, "username", user);
    addQuoted(value, "realm", challenge.realm);
    addQuoted(value, "nonce", challenge.nonce);
    addQuoted(value, "uri", target.location);
    if (opaque) addQuoted(value, "opaque", *opaque);
    addQuoted(value, "response", digestResponse(user, password, challenge, target));
    return value;
}

bool basicHolds(string_view value, const PasswordOf& passwordOf) {
    std::string credentials;
    value.remove_prefix(std::min(kBasic.size() + 1, value.size()));
    DecodeBase64(value, credentials);
    const string_view user = string_view(credentials).substr(0, credentials.find(':'));
    const auto password = passwordOf(user);
    return password && credentials == joined(user, *password);
}

bool digestHolds(string_view value, HttpTarget target, HttpChallenge challenge,
                 const PasswordOf& passwordOf) {
    const bool ours = quotedOrEmpty(value, "realm") == challenge.realm &&
                      quotedOrEmpty(value, "nonce") == challenge.nonce &&
                      quotedOrEmpty(value, "uri") == target.location;
    const string_view user = quotedOrEmpty(value, "username");
    const auto password = ours ? passwordOf(user) : std::nullopt;
    return password &&
           quotedOrEmpty(value, "response") == digestResponse(user, *password, challenge, target);
}

}  // namespace

std::optional<std::string> authorizationValue(string_view challenge, string_view user,
                                              string_view password, HttpTarget target) {
    if (startsWithIgnoringCase(challenge, kBasic)) return basicValue(user, password);
    if (startsWithIgnoringCase(challenge, kDigest)) {
        return digestValue(challenge, user, password, target);
    }
    return std::nullopt;
}

bool authorizationHolds(string_view authorization, HttpTarget target, HttpChallenge challenge,
                        const PasswordOf& passwordOf) {
    if (startsWithIgnoringCase(authorization, kBasic)) return basicHolds(authorization, passwordOf);
    return startsWithIgnoringCase(authorization, kDigest) &&
           digestHolds(authorization, target, challenge, passwordOf);
}

}  // namespace tintoral

// The TXT record of an announced service (RFC 6763, section 6): strings of at most 255 bytes, each
// "key=value". What a peer writes there is foreign: a value passes cleanText() when it is read.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tintoral {

namespace txt_keys {
inline constexpr std::string_view usbMfg = "usb_MFG";  // maker, from the device ID
inline constexpr std::string_view usbMdl = "usb_MDL";  // model, from the device ID
inline constexpr std::string_view usbCmd = "usb_CMD";  // command set, from the device ID
inline constexpr std::string_view ty = "ty";           // maker and model in one text
inline constexpr std::string_view pdl = "pdl";         // document formats
inline constexpr std::string_view rp = "rp";           // queue
inline constexpr std::string_view printerState = "printer-state";
inline constexpr std::string_view usbS = "usb_S";              // HP's status
inline constexpr std::string_view usbVStatus = "usb_VSTATUS";  // HP's status
}  // namespace txt_keys

class TxtRecord {
  public:
    // Takes in one string of the record. A string without "=" or without a key says nothing here
    // and is left out. Of strings that share a key the first one counts. Nothing is taken in beyond
    // 64 KiB.
    void add(std::string_view keyAndValue);

    // The value of `key`, ASCII letters of either case; nothing when the key is absent.
    std::optional<std::string> text(std::string_view key) const;

    friend bool operator==(const TxtRecord&, const TxtRecord&) = default;

  private:
    std::map<std::string, std::string, std::less<>> values_;  // by key in small letters
    std::size_t size_ = 0;
};

}  // namespace tintoral

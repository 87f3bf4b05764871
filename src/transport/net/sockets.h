// The socket toolkit that every network protocol of the program stands on.
//
// All calls block, each for at most its own time-out. A failure is a return value; its cause goes
// to standard error with a prefix that names the function. Times are in milliseconds, sizes in
// bytes. Hosts are IPv4 names or dotted addresses unless a function says otherwise.
#pragma once

#include <netinet/in.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/byte_reader.h"
#include "support/fixed_text.h"
#include "support/unique_fd.h"

namespace tintoral {

// A TCP connection to an IPv4 host, or an invalid descriptor after "TcpOpen:..." on standard error:
// the name does not resolve, the host refuses (at once), or it does not answer within 2 s. The
// descriptor is blocking, but a send that makes no progress for 2 s fails.
UniqueFd TcpOpenConnection(const std::string& host, std::uint16_t port);

// A TCP connection over IPv6, trying each address of the name in turn, or its IPv4 addresses where
// it has no others; invalid when none connects.
// Each attempt is bounded to 2 s as well.
UniqueFd openTCP6(const std::string& host, std::uint16_t port);

// One wait for readability, one recv. Result: bytes received; 0 on time-out, end of stream or
// receive error; -1 when the wait itself failed.
int SelectRecv(int socket, MutableBytes buffer, std::chrono::milliseconds timeout);

// As SelectRecv, but -1 for anything below 1.
int Nrecv(int socket, MutableBytes buffer, std::chrono::milliseconds timeout);

// 1 when the socket is readable within the time-out, 0 when not, -1 (after "select" on standard
// error) on failure.
int SelectCheck(int socket, std::chrono::milliseconds timeout);

// Waits for bytes and reads once; then, as meant, only waits out what is left of the time-out,
// unless the buffer is full. Result: bytes read, 0 when none came in time, -1 when the peer closed
// or failed before anything came.
int waitRecv(int socket, MutableBytes buffer, std::chrono::milliseconds timeout);

// Reads until the buffer is full. Result: bytes read, fewer than that when the time is up or the
// peer closes; 0 when none came in time, -1 when the peer closed or failed before anything came.
int receiveAll(int socket, MutableBytes buffer, std::chrono::milliseconds timeout);

// Writes until all is written or a write fails. After a partial write the next one starts again at
// the first byte, as meant. Result: that of the last write. A peer that is gone gives -1 and never
// a signal.
int waitSend(int socket, Bytes bytes);

// Wall-clock milliseconds, cut to 32 bits.
std::uint32_t Getmtime();

using Ipv4Address = std::array<std::uint8_t, 4>;
using MacAddress = std::array<std::uint8_t, 6>;

// The address as "10.0.0.1", and back: nothing for any other text.
std::string dottedText(const Ipv4Address& address);
std::optional<Ipv4Address> ipv4FromDotted(const std::string& text);

// A protocol of questions and answers over UDP.
struct UdpService {
    std::uint16_t port;
    std::chrono::milliseconds wait;  // for the answer, in each attempt
    // What anyone but the asked host sends from that port is not heard; a host without the service
    // ends an attempt at once.
    bool onlyFromHost;
};
inline constexpr UdpService kSnmpService{161, std::chrono::milliseconds(100), false};

// One UDP exchange with `host`: two attempts. Result: the bytes of the reply, 0 when none came. A
// send failure is reported ("Client: sendto") and counts as a silent attempt. Ends the process with
// status 1 when no socket can be made ("Client:socket").
int sendAndReceive(const std::string& host, Bytes request, MutableBytes reply,
                   const UdpService& service = kSnmpService);

// What udpExchange() does when a datagram cannot be sent: wait as if it had been, or return -1 at
// once.
enum class OnSendFailure { KeepTrying, GiveUp };

// A datagram socket (closed by its owner), or an invalid one after "Client:socket" on standard
// error.
UniqueFd openUdpSocket();

// The exchange itself: up to two times, sends the request to the service at `host` ("Client:
// sendto" on standard error when that fails), clears `reply` and waits. Result: the bytes of the
// reply (a longer datagram is cut to the buffer), 0 after two silent attempts, -1 when a send
// failed and `onSendFailure` is GiveUp.
int udpExchange(int socket, const std::string& host, const UdpService& service, Bytes request,
                MutableBytes reply, OnSendFailure onSendFailure);

// A datagram socket of any local address and port that may broadcast; an invalid one after
// "Client:socket" on standard error when any of that fails.
UniqueFd openBroadcastSocket();

// Sends one datagram; false after "Client: sendto" on standard error.
bool sendDatagramTo(int socket, const Ipv4Address& address, std::uint16_t port, Bytes datagram);

// A URL's parts.
struct UrlParts {
    std::string host;
    int port = 0;
    std::string location;
};

// Splits the first 1024 characters of `url`. `port` is set to 631 for "ipp...", else 80, and then
// to the port that the URL names (0 for one that is no port number); `host` is left alone when the
// URL names none. Result: 1, or 0 when there is no "//" (host and location are left alone then).
int Url2host_port_location(std::string_view url, UrlParts& parts);

// The first IPv4 interface that is not 127.0.0.1: its name, address and netmask, most significant
// byte first. Nothing is written when there is none. Result: 0.
int myIPAddress(std::string& interfaceName, Ipv4Address& address, Ipv4Address& netmask);

// The link-layer address of the named interface (AF_PACKET); nothing is written when there is none.
// Result: 0.
int myMacAddress(std::string_view interfaceName, MacAddress& address);

// The length of `text`; what it once looked up is gone, as meant.
int GetMacAddress(const void* ignored, std::string_view text);

// The host name of an IPv4 socket address by reverse look-up, or else its dotted address. Result:
// the name's length.
int gethostnameFromSock(const sockaddr_in& address, BoundedText& name);

// The dotted address of the IPv4 peer of a connected socket; empty when there is none. Result: the
// text's length.
int peerAddressOfSock(int socket, BoundedText& address);

// The sixteen bytes of an IPv6 socket address in hex, one number a byte, without padding, colons
// between. Result: 0.
int my_ntoa(BoundedText& text, const sockaddr_in6& address);

// One send. Result: bytes sent, which may be fewer; -1 on failure. A peer that is gone gives -1 and
// never a signal.
int sendOnce(int socket, Bytes bytes);

// Sends all the bytes, each partial send followed by one of the rest. Waits up to 2 s for the peer
// to take more, and up to `timeout` in all. Result: 0, or -1 with errno set. A peer that is gone
// gives -1 and never a signal.
int sendAll(int socket, Bytes bytes, std::chrono::milliseconds timeout);

// Opens a connection, sends the bytes in one send and closes. Result: bytes sent, or -1 ("tcpSend:
// send " on standard error when the send failed).
int tcpSend(const std::string& host, std::uint16_t port, Bytes bytes);

// The IPv4 socket address of a host name or dotted address; false when it is neither.
bool resolveIpv4(const std::string& host, std::uint16_t port, sockaddr_in& address);

}  // namespace tintoral

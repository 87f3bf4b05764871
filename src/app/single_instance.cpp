#include "app/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/un.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTimer>
#include <cerrno>
#include <cstdlib>
#include <optional>

#include "support/clock.h"
#include "support/folders.h"
#include "support/report.h"
#include "support/text.h"

namespace tintoral {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto kPatience = 5s;
constexpr auto kRetry = 20ms;
constexpr std::size_t kLongestSocketPath = sizeof(sockaddr_un::sun_path) - 1;
constexpr qsizetype kLongestRequest = 4096;
constexpr QByteArrayView kVerb = "raise ";

// Empty where nothing can be kept.
fs::path folderFor(const fs::path& settings) {
    if (settings.empty()) return {};
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime == '/') return runtime;
    return makeFolders(settings.parent_path()) ? fs::path() : settings.parent_path();
}

// The same for every path that leads to the same file.
std::string nameFor(const fs::path& settings) {
    constexpr int kDigits = 16;
    std::error_code ignored;
    const fs::path path = fs::weakly_canonical(settings, ignored);
    const QByteArray hash = QCryptographicHash::hash(
        QByteArray::fromStdString((path.empty() ? settings : path).string()),
        QCryptographicHash::Sha256);
    return "tintoral-" + hash.toHex().left(kDigits).toStdString();
}

QByteArray startToken() {
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token;
}

// The token of a whole request; nothing when it is none, or not all of it has come.
std::optional<QByteArray> tokenOf(const QByteArray& request) {
    const qsizetype end = request.indexOf('\n');
    if (end < 0 || !request.startsWith(kVerb)) return std::nullopt;
    const std::string token = request.mid(kVerb.size(), end - kVerb.size()).toStdString();
    return QByteArray::fromStdString(cleanText(token));
}

void dismiss(QLocalSocket& caller) {
    caller.abort();
    caller.deleteLater();
}

void hear(QLocalSocket& caller, const SingleInstance::RaiseHandler& raise) {
    const QByteArray request = caller.peek(kLongestRequest);
    const auto token = tokenOf(request);
    if (token || request.size() == kLongestRequest) dismiss(caller);
    if (token) raise(*token);
}

void receive(QLocalSocket& caller, const SingleInstance::RaiseHandler& raise) {
    caller.setReadBufferSize(kLongestRequest);
    QObject::connect(&caller, &QLocalSocket::readyRead, &caller,
                     [&caller, raise] { hear(caller, raise); });
    QObject::connect(&caller, &QLocalSocket::disconnected, &caller, &QObject::deleteLater);
    QTimer::singleShot(kPatience, &caller, [&caller] { dismiss(caller); });
}

}  // namespace

SingleInstance::SingleInstance(const fs::path& settings) {
    const fs::path folder = folderFor(settings);
    if (folder.empty()) return;
    const std::string name = nameFor(settings);
    lockPath_ = folder / (name + ".lock");
    socketPath_ = folder / (name + ".socket");
}

SingleInstance::Lock SingleInstance::tryLock() {
    if (socketPath_.native().size() > kLongestSocketPath) return Lock::Impossible;
    constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    UniqueFd file(::open(lockPath_.c_str(), kFlags, 0600));
    if (!file.valid()) return Lock::Impossible;
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Lock::Taken : Lock::Impossible;
    lock_ = std::move(file);
    return Lock::Mine;
}

bool SingleInstance::tellOther() const {
    int count = 1;
    char name[] = "tintoral";
    char* arguments[] = {name, nullptr};
    const QCoreApplication forSockets(count, arguments);
    QLocalSocket socket;
    socket.connectToServer(QString::fromStdString(socketPath_), QIODevice::WriteOnly);
    if (!socket.waitForConnected()) return false;
    socket.write(kVerb.toByteArray() + startToken().left(kLongestRequest / 2) + '\n');
    return socket.waitForBytesWritten();
}

// The other process may have locked and not listen yet, or end without having heard us: then the
// lock is ours.
bool SingleInstance::handOver() {
    if (lockPath_.empty()) return false;
    const QDeadlineTimer patience(kPatience);
    Lock lock = tryLock();
    while (lock == Lock::Taken && !patience.hasExpired()) {
        if (tellOther()) return true;
        pauseFor(kRetry);
        lock = tryLock();
    }
    if (lock != Lock::Mine)
        reportLine("a second start will open a second window: cannot lock " + lockPath_.string());
    return false;
}

std::unique_ptr<QObject> SingleInstance::listen(const RaiseHandler& raise) const {
    if (!lock_.valid()) return nullptr;
    const QString path = QString::fromStdString(socketPath_);
    QLocalServer::removeServer(path);  // of a process that was killed
    auto server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server.get(), &QLocalServer::newConnection, [server = server.get(), raise] {
        while (QLocalSocket* caller = server->nextPendingConnection()) receive(*caller, raise);
    });
    if (!server->listen(path))
        reportLine("later starts are not heard: " + server->errorString().toStdString());
    return server;
}

}  // namespace tintoral

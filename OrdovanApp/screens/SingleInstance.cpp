#include "OrdovanApp/screens/SingleInstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>

#include <cerrno>
#include <utility>

using namespace Qt::StringLiterals;
using std::chrono::milliseconds;

namespace {

constexpr QFile::Permissions privateFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
constexpr QFile::Permissions others =
    QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

/// sizeof(sockaddr_un::sun_path), unix(7), with its terminating zero.
constexpr qsizetype longestSocketPath = 107;
constexpr auto socketName = "/window"_L1;

/// The first bytes of a wish; it changes when the rest does.
const QByteArray greeting = "ordovan wish 1"_ba;
const QByteArray taken = "taken"_ba;
constexpr qint64 longestWish = 64 * 1024;
constexpr QDataStream::Version streamVersion = QDataStream::Qt_6_4;

constexpr milliseconds retryPause{50};
constexpr milliseconds connectPatience{1000};

/// The folder is made where it is missing, and is the user's alone.
bool isPrivate(const QString& path) {
    QDir().mkdir(path, privateFolder);
    const QFileInfo folder(path);
    const QFileInfo self(u"/proc/self"_s);
    return folder.isDir() && !folder.isSymLink() && !(folder.permissions() & others) &&
           folder.ownerId() == self.ownerId();
}

}  // namespace

std::optional<QString> SingleInstance::meetingFolder(const QString& runtimeFolder, const QString& temporaryFolder,
                                                     const QString& display) {
    const QString user = QString::number(QFileInfo(u"/proc/self"_s).ownerId());
    const auto digest = QCryptographicHash::hash(display.toUtf8(), QCryptographicHash::Sha256).toHex().first(8);
    for (const QString& base : {QDir::isAbsolutePath(runtimeFolder) ? runtimeFolder + "/ordovan"_L1 : QString(),
                                temporaryFolder + "/ordovan-"_L1 + user}) {
        const QString folder = base + u'/' + QString::fromLatin1(digest);
        if (base.isEmpty() || QFile::encodeName(folder + socketName).size() > longestSocketPath) continue;
        if (isPrivate(base) && isPrivate(folder)) return folder;
    }
    return std::nullopt;
}

SingleInstance::SingleInstance(std::optional<QString> meetingFolder, QObject* parent)
    : QObject(parent), folder_(std::move(meetingFolder)) {}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::socketPath() const {
    return *folder_ + socketName;
}

SingleInstance::Outcome SingleInstance::start(const Wish& wish, milliseconds patience,
                                              const std::function<void()>& beforeHandOver) {
    if (!folder_) return Outcome::first;
    QElapsedTimer timer;
    timer.start();
    bool prepared = false;
    do {
        auto lock = ordovan::tryLockFolder(Url::file(QFile::encodeName(*folder_).toStdString()));
        const bool isHeldElsewhere = !lock && lock.error() == OrdovanSystemError::posix(EWOULDBLOCK);
        if (lock) lock_ = *std::move(lock);
        if (!isHeldElsewhere) return Outcome::first;
        if (!prepared) beforeHandOver();
        prepared = true;
        switch (deliver(wish, patience)) {
            case Delivery::taken:
                return Outcome::handedOver;
            case Delivery::waiting:
                return Outcome::queued;
            case Delivery::lost:
                QThread::msleep(static_cast<unsigned long>(retryPause.count()));
        }
    } while (timer.elapsed() < patience.count());
    return Outcome::unanswered;
}

/// `lost`: nobody listens (yet, or any more), or the one who did ended before taking it.
SingleInstance::Delivery SingleInstance::deliver(const Wish& wish, milliseconds patience) const {
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    if (!socket.waitForConnected(static_cast<int>(connectPatience.count()))) return Delivery::lost;

    const std::string_view path = wish.folder ? wish.folder->path() : std::string_view();
    QDataStream out(&socket);
    out.setVersion(streamVersion);
    out << greeting << QByteArray(path.data(), static_cast<qsizetype>(path.size())) << wish.activationToken;

    QElapsedTimer timer;
    timer.start();
    while (socket.bytesAvailable() < taken.size()) {
        const qint64 left = patience.count() - timer.elapsed();
        if (left > 0 && socket.waitForReadyRead(static_cast<int>(left))) continue;
        if (socket.bytesAvailable() >= taken.size()) break;
        const bool sent = socket.state() == QLocalSocket::ConnectedState && socket.bytesToWrite() == 0;
        return sent ? Delivery::waiting : Delivery::lost;
    }
    return socket.read(taken.size()) == taken ? Delivery::taken : Delivery::lost;
}

bool SingleInstance::listen() {
    if (!lock_) return false;
    server_ = new QLocalServer(this);
    connect(server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { receive(socket); });
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            receive(socket);
        }
    });
    // Whoever holds the lock is the only one to listen, so a socket that is there is a dead one's.
    QLocalServer::removeServer(socketPath());
    return server_->listen(socketPath());
}

void SingleInstance::close() {
    delete std::exchange(server_, nullptr);
}

void SingleInstance::receive(QLocalSocket* socket) {
    if (socket->bytesAvailable() > longestWish) return socket->abort();
    QDataStream in(socket);
    in.setVersion(streamVersion);
    in.startTransaction();
    QByteArray head;
    QByteArray path;
    QByteArray token;
    in >> head >> path >> token;
    if (!in.commitTransaction()) return;
    if (head != greeting) return socket->abort();
    Wish wish{.folder = std::nullopt, .activationToken = token};
    if (path.startsWith('/')) wish.folder = Url::file(path.toStdString());
    socket->write(taken);
    socket->disconnectFromServer();
    Q_EMIT wished(wish);
}

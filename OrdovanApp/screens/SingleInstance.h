#pragma once

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanCore/Url.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

class QLocalServer;
class QLocalSocket;

/// Lets one window serve a user on a display: the first program holds the kernel's lock on a private folder and listens
/// on a socket in it, later ones hand their wish over and end. The lock goes with its process, however that ends, so
/// what a crash leaves behind blocks nobody.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    /// What a program that was started wants.
    struct Wish {
        std::optional<Url> folder;   ///< absolute
        QByteArray activationToken;  ///< by which the desktop lets a window come forward; may be empty
    };

    enum class Outcome {
        first,       ///< this program is the one; it listens from `listen` on
        handedOver,  ///< the first has the wish
        queued,      ///< the first is busy; the wish waits in its socket
        unanswered,  ///< the first holds the lock but can not be reached
    };

    /// The private folder (0700, the user's own) in which the programs of one display meet: below `runtimeFolder`
    /// ($XDG_RUNTIME_DIR), else below `temporaryFolder`. Made where it is missing. Nothing where there is none to
    /// be had; every program then stands alone.
    [[nodiscard]] static std::optional<QString> meetingFolder(const QString& runtimeFolder,
                                                              const QString& temporaryFolder, const QString& display);

    explicit SingleInstance(std::optional<QString> meetingFolder, QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Becomes the first, or hands the wish over and waits up to `patience` for the first to take it. Needs no
    /// application object to become the first, but one to hand over: `beforeHandOver` is called then.
    [[nodiscard]] Outcome start(const Wish& wish, std::chrono::milliseconds patience,
                                const std::function<void()>& beforeHandOver);

    /// Takes wishes from now on; `wished` tells of each. Only for the first. False when it can not; the program works
    /// all the same.
    bool listen();
    /// Takes no more: programs started from now on wait until this one has ended, and are then the first.
    void close();

Q_SIGNALS:
    void wished(const SingleInstance::Wish& wish);

private:
    enum class Delivery { taken, waiting, lost };

    [[nodiscard]] QString socketPath() const;
    [[nodiscard]] Delivery deliver(const Wish& wish, std::chrono::milliseconds patience) const;
    void receive(QLocalSocket* socket);

    std::optional<QString> folder_;
    ordovan::HeldLock lock_;
    QLocalServer* server_ = nullptr;
};

#pragma once

#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/platform/FileRecordStorage.h"

#include <chrono>
#include <memory>
#include <vector>

/// The real disk, clock, threads and stores, as both front ends use them. Made on the main thread once there is a
/// QCoreApplication, and destroyed (waiting for running work) on it after the controllers that use its ports.
class SystemEnvironment {
public:
    /// With the user's own storage locations.
    SystemEnvironment();
    explicit SystemEnvironment(ordovan::StorageLocations locations);
    ~SystemEnvironment();
    SystemEnvironment(const SystemEnvironment&) = delete;
    SystemEnvironment& operator=(const SystemEnvironment&) = delete;

    [[nodiscard]] TidyPorts ports();
    /// From now on changes of the settings, and those of the rules with a `done`, are stored through `background`. For
    /// a front end whose thread must not wait.
    void storeInBackground();
    /// Does one thing after the other on another thread; what it was given is done before the environment is gone.
    [[nodiscard]] ordovan::BackgroundWork background();
    /// Where settings and rules are stored.
    [[nodiscard]] ordovan::KeyValueStore& values();

    [[nodiscard]] AppSettings& settings();
    [[nodiscard]] RuleStore& rules();
    [[nodiscard]] const ordovan::StorageLocations& locations() const;

    /// False when the settings file was there and could not be read as this was made.
    [[nodiscard]] bool couldReadSettings() const;
    /// The stored documents that could not be used and were set aside since then.
    [[nodiscard]] std::vector<ordovan::FileRecordStorage::SetAside> allSetAside() const;

    /// Waits until nothing is at work in the background any more, at most this long. True when that is so.
    [[nodiscard]] bool waitForWork(std::chrono::milliseconds longest);

private:
    struct State;
    std::unique_ptr<State> state_;
};

#pragma once

#include "OrdovanCore/ContentReading.h"

#include <memory>

/// Reads files of the real disk. Stateless; any thread.
class SystemContentReader final : public OrdovanContentReading {
public:
    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override;
};

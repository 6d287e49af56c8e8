#pragma once

#include "OrdovanCore/Executor.h"
#include "OrdovanCore/testing/FaultyFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// The folder "/r" is organized into "/r/ordovan+".
class ApplyFixture : public ::testing::Test {
protected:
    void tree(std::initializer_list<std::string_view> items) { testing::build(memory, "/r", items); }

    /// Makes the output folder's Documents a volume of its own.
    void documentsOnAnotherVolume() { memory.addVolume("/r/ordovan+/Documents"); }

    static OrdovanFileProposal proposal(std::string_view source, std::string_view destination) {
        OrdovanFileProposal proposal;
        proposal.source = Url::file(source);
        proposal.destination = Url::file(destination);
        return proposal;
    }
    static OrdovanFileProposal toDocuments(std::string_view name) {
        const std::string file(name);
        return proposal("/r/" + file, "/r/ordovan+/Documents/" + file);
    }

    OrdovanExecutionReport apply(const std::vector<OrdovanFileProposal>& proposals,
                                 const OrdovanRunControl& control = {}) {
        return OrdovanExecutor::apply(proposals, Url::file("/r"), Url::file("/r/ordovan+"), fs, 1700000000.5, control);
    }
    /// Applies one proposal; "status: message".
    std::string fate(const OrdovanFileProposal& one) {
        const OrdovanExecutionReport report = apply({one});
        EXPECT_EQ(report.outcomes.size(), 1u);
        EXPECT_EQ(report.journal.entries.size(), report.movedCount());
        return std::string(rawValue(report.outcomes[0].status)) + ": " + report.outcomes[0].message;
    }
    static std::string skipped(const char* message) { return std::string("skippedRevalidation: ") + message; }
    static std::string failed(const char* message) { return std::string("failed: ") + message; }

    testing::MemoryFileSystem memory;
    testing::FaultyFileSystem fs{memory};
};

}  // namespace ordovan::test

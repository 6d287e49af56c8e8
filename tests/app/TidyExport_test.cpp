#include "OrdovanCore/PlanExport.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <QString>

#include <optional>
#include <string>

using ::testing::HasSubstr;

namespace {

constexpr const char* couldNotBeSaved = "The plan couldn't be saved there. Try another folder.";

class TidyExport : public ordovan::test::TidyWorld {
protected:
    TidyExport() { tree({"x.pdf = 1", "y.jpg = 2"}); }

    /// What the signal told; nothing when it was not sent, "more than once" when it was repeated.
    std::optional<std::string> exported(TidyViewModel& model, OrdovanPlanExportFormat format) {
        std::optional<std::string> told;
        const auto connection = QObject::connect(&model, &TidyViewModel::planExported, [&](const QString& error) {
            told = told ? "more than once" : error.toStdString();
        });
        if (model.exportPlan(file, format)) tasks.finish();
        QObject::disconnect(connection);
        return told;
    }

    const Url file = Url::file("/home/plan.md");
};

TEST_F(TidyExport, WritesThePlanAndWhatIsTickedAsMarkdown) {
    const auto model = previewed();
    model->toggle(model->plan()->proposals[0].id());
    EXPECT_EQ(exported(*model, OrdovanPlanExportFormat::markdown), "");
    EXPECT_EQ(memory.read(file.path()), OrdovanPlanExport::markdown(*model->plan(), "r", model->excluded()));
    EXPECT_THAT(*memory.read(file.path()), HasSubstr("(selected: 1)"));
}

TEST_F(TidyExport, WritesThePlanAsATable) {
    const auto model = previewed();
    EXPECT_EQ(exported(*model, OrdovanPlanExportFormat::csv), "");
    EXPECT_EQ(memory.read(file.path()), OrdovanPlanExport::csv(*model->plan(), {}));
}

TEST_F(TidyExport, SaysWhenTheFileCanNotBeWritten) {
    const auto model = previewed();
    writeError = EACCES;
    EXPECT_EQ(exported(*model, OrdovanPlanExportFormat::csv), couldNotBeSaved);
    writeError = 0;
    EXPECT_EQ(exported(*model, OrdovanPlanExportFormat::csv), "");
}

TEST_F(TidyExport, WritesThePlanAsItWasWhenItWasAskedFor) {
    const auto model = previewed();
    const auto plan = model->plan();
    EXPECT_TRUE(model->exportPlan(file, OrdovanPlanExportFormat::csv));
    EXPECT_FALSE(memory.read(file.path()));  // nothing happens on the controller's thread
    model->toggle(plan->proposals[0].id());
    tasks.finish();
    EXPECT_EQ(memory.read(file.path()), OrdovanPlanExport::csv(*plan, {}));
}

TEST_F(TidyExport, GoesOnOneAtATime) {
    const auto model = previewed();
    EXPECT_TRUE(model->exportPlan(file, OrdovanPlanExportFormat::csv));
    EXPECT_FALSE(model->exportPlan(file, OrdovanPlanExportFormat::csv));
    tasks.finish();
    EXPECT_TRUE(model->exportPlan(file, OrdovanPlanExportFormat::csv));
}

TEST_F(TidyExport, NeverWritesThePlanOfAnotherFolder) {
    const auto model = previewed();
    ordovan::testing::build(memory, "/s", {});
    model->chooseFolder(Url::file("/s"));
    EXPECT_EQ(exported(*model, OrdovanPlanExportFormat::csv), std::nullopt);
    EXPECT_FALSE(make()->exportPlan(file, OrdovanPlanExportFormat::csv));
}

TEST_F(TidyExport, IsDoneEvenWhenTheControllerIsGone) {
    auto model = previewed();
    EXPECT_TRUE(model->exportPlan(file, OrdovanPlanExportFormat::csv));
    model.reset();
    tasks.finish();
    EXPECT_TRUE(memory.read(file.path()));
}

}  // namespace

#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace ordovan::cli {

/// Talking with the person at the terminal: messages, questions and progress, all on standard error.
class Console {
public:
    struct Manner {
        bool isQuiet = false;
        bool mayColor = true;
    };

    explicit Console(Manner manner);
    ~Console() { clearProgress(); }
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// A remark that nobody needs; not said when quiet.
    void remark(std::string_view sentence);
    /// Something that the user has to know.
    void warn(std::string_view sentence);
    /// Why the program could not do what it was told.
    void fail(std::string_view sentence);

    /// True when somebody can read a question and answer it: standard error and standard input are terminals.
    [[nodiscard]] bool canAsk() const;

    enum class Answer { yes, no, interrupted };
    /// Asks and waits for a line. Only "y" and "yes" (any case) are a yes; the end of input is a no.
    [[nodiscard]] Answer ask(std::string_view question);

    /// Shows a line that the next one replaces: only on a terminal, and some ten times a second at most. The first one
    /// is shown at once.
    void progress(std::string_view text);
    void clearProgress();

    /// Whether results on standard output are to be colored.
    [[nodiscard]] bool colorsResults() const { return colorsResults_; }

private:
    void say(std::string_view color, std::string_view word, std::string_view sentence);

    bool isQuiet_;
    bool colorsResults_;
    bool colorsMessages_;
    bool showsProgress_;
    bool progressIsShown_ = false;
    std::chrono::steady_clock::time_point lastProgress_{};
};

/// Sees to it that descriptors 0 to 2 are open, so that no file of the user's ever takes the place of one that was
/// closed when the program was started. Writing to such a descriptor fails.
void occupyStandardDescriptors();

}  // namespace ordovan::cli

#pragma once

namespace korvane::runner {

/// Tells when a page has to be loaded again because the engine has dropped its question for a name
/// and a password. The question and the start of the load that it is for come from two processes,
/// and may change places on the way. At a start the engine cancels what was asked before, of this
/// very load as well; all that it says is that the load was cancelled, and nothing would be shown.
class DroppedQuestion {
public:
    /// What is to be done about a load that was cancelled.
    enum class Cure {
        none,   ///< it became something else, or was not wanted any more
        repeat, ///< the load is to be asked for once more, of which nothing has to be told here
        giveUp, ///< the person has to be told: it was repeated often enough
    };

    /// The window asks for a page of the site.
    void loadWanted() {
        stage_ = Stage::wanted;
        repeats_ = 0;
    }
    /// Nothing that was asked for is missed any more: its page has come, or another of the window's
    /// own takes its place.
    void loadSettled() { *this = {}; }

    void questionAsked() {
        if (stage_ == Stage::wanted) stage_ = Stage::asked;
    }
    /// Also of a load that the page itself has asked for.
    void loadStarted() { stage_ = stage_ == Stage::asked ? Stage::inDoubt : Stage::none; }

    Cure loadCancelled() {
        // Loads are cancelled when the window asks for another, too.
        if (stage_ != Stage::inDoubt) return Cure::none;
        if (repeats_ == mostRepeats) {
            loadSettled();
            return Cure::giveUp;
        }
        ++repeats_;
        stage_ = Stage::wanted;
        return Cure::repeat;
    }

    static constexpr int mostRepeats = 10;

private:
    enum class Stage {
        none,
        wanted,  ///< not started yet
        asked,   ///< likewise, and there was a question already
        inDoubt, ///< started behind its question
    };

    Stage stage_ = Stage::none;
    int repeats_ = 0; ///< one behind the other
};

} // namespace korvane::runner

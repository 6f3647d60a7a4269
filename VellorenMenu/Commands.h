#pragma once

#include <concepts>
#include <functional>

namespace velloren {

/// How far a command has come.
enum class CommandState {
    none = 0, ///< created, not run
    executing = 1,
    failed = 2,
    finished = 3,
};

/// Gets every change of a command's state; may be none.
using CommandStateUpdated = std::function<void(CommandState)>;

/// A command that tells how far it has come.
template <class Command>
concept StateUpdatableCommandProtocol = requires(Command command) {
    { command.stateUpdated } -> std::same_as<CommandStateUpdated&>;
    { command.state } -> std::same_as<CommandState&>;
};

/// A command that can be run.
template <class Command>
concept ExecutableCommandProtocol = requires(Command command) {
    command.execute();
};

/// A command whose effect can be taken back.
template <class Command>
concept UndoableCommandProtocol = ExecutableCommandProtocol<Command> && requires(Command command) {
    command.undo();
};

/// Composes a mail to the product's support in the user's mail program; its subject names the product and its
/// version. Main thread only; each run takes a new command.
struct SupportCommand {
    CommandStateUpdated stateUpdated;
    CommandState state = CommandState::none;

    /// Ends as `finished` once the desktop was asked, whatever it answered, and as `failed` where the subject
    /// cannot be put into an address.
    void execute();
};

/// The further commands of the product's vocabulary. The agent runs neither.
struct FeedbackAndSupportCommand {
    CommandStateUpdated stateUpdated;
    CommandState state = CommandState::none;
};

struct SendLogsToSupportCommand {
    CommandStateUpdated stateUpdated;
    CommandState state = CommandState::none;
};

static_assert(ExecutableCommandProtocol<SupportCommand> && StateUpdatableCommandProtocol<SupportCommand>);
static_assert(StateUpdatableCommandProtocol<FeedbackAndSupportCommand>);
static_assert(StateUpdatableCommandProtocol<SendLogsToSupportCommand>);

} // namespace velloren

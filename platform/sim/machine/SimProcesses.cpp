#include "platform/sim/machine/SimProcesses.h"

#include <sstream>
#include <utility>

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/Scenario.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/core/VirtualClock.h"

namespace connectkit::sim {

namespace {

// Splits a command line into its executable and the text after it.
std::pair<std::wstring, std::wstring> SplitCommandLine(const std::wstring& commandLine) {
    size_t begin = commandLine.find_first_not_of(L' ');
    if (begin == std::wstring::npos) {
        return {};
    }
    size_t end = commandLine[begin] == L'"' ? commandLine.find(L'"', begin + 1)
                                            : commandLine.find(L' ', begin);
    size_t first = commandLine[begin] == L'"' ? begin + 1 : begin;
    std::wstring executable =
        commandLine.substr(first, end == std::wstring::npos ? end : end - first);
    std::wstring rest =
        end == std::wstring::npos ? L"" : commandLine.substr(end + (commandLine[end] == L'"'));
    return {executable, rest};
}

}  // namespace

SimProcesses::Arguments SimProcesses::ArgumentsOf(const std::wstring& commandLine) {
    std::wistringstream words(Lower(SplitCommandLine(commandLine).second));
    Arguments arguments;
    for (std::wstring word; words >> word;) {
        arguments.push_back(word);
    }
    return arguments;
}

std::wstring SimProcesses::ProgramName(const std::wstring& commandLine) {
    std::wstring executable = SplitCommandLine(commandLine).first;
    auto parts = SplitPath(executable);
    std::wstring name = parts.empty() ? L"" : Lower(parts.back());
    if (name.size() > 4 && name.ends_with(L".exe")) {
        name.resize(name.size() - 4);
    }
    return name;
}

platform::ProcessOutcome SimProcesses::Run(const std::wstring& commandLine, uint32_t waitMs) {
    platform::ProcessOutcome outcome;
    if (auto error = FaultedCall(faults_, clock_, "process.run", platform::kErrorAccessDenied)) {
        outcome.error = *error;
        return outcome;
    }
    Program program;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const Program* found = Find(commandLine);
        if (!found) {
            outcome.error = platform::kErrorFileNotFound;
            return outcome;
        }
        program = *found;
        history_.push_back(Started{commandLine, clock_.TickCount64()});
    }
    auto finish = [program, commandLine] {
        return program.effect ? program.effect(commandLine) : program.exitCode;
    };
    if (program.durationMs <= waitMs) {
        clock_.Sleep(program.durationMs);
        outcome.finished = true;
        outcome.exitCode = finish();
        return outcome;
    }
    clock_.Post(program.durationMs, [finish] { finish(); });
    clock_.Sleep(waitMs);
    outcome.exitCode = platform::kStillActive;
    return outcome;
}

const SimProcesses::Program* SimProcesses::Find(const std::wstring& commandLine) const {
    std::wstring name = ProgramName(commandLine);
    if (auto installed = installed_.find(name); installed != installed_.end()) {
        return &installed->second;
    }
    auto [first, last] = handlers_.equal_range(name);
    if (first == last) {
        return nullptr;
    }
    Arguments arguments = ArgumentsOf(commandLine);
    for (auto handler = first; handler != last; ++handler) {
        if (handler->second.takes(arguments)) {
            return &handler->second.program;
        }
    }
    return nullptr;
}

void SimProcesses::Install(const std::wstring& name, Program program) {
    std::lock_guard<std::mutex> lock(mutex_);
    installed_[Lower(name)] = std::move(program);
}

void SimProcesses::AddHandler(const std::wstring& name, std::function<bool(const Arguments&)> takes,
                              Program program) {
    std::lock_guard<std::mutex> lock(mutex_);
    handlers_.emplace(Lower(name), Handler{std::move(takes), std::move(program)});
}

void SimProcesses::Apply(const Scenario& scenario) {
    for (const auto& program : scenario.programs) {
        Install(program.name, Program{program.exitCode, program.durationMs, nullptr});
    }
}

void SimProcesses::Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    installed_.clear();
    history_.clear();
}

std::vector<SimProcesses::Started> SimProcesses::History() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return history_;
}

}  // namespace connectkit::sim

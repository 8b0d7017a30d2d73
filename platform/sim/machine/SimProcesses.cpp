#include "platform/sim/machine/SimProcesses.h"

#include "platform/ports/Errors.h"
#include "platform/sim/core/FaultInjector.h"
#include "platform/sim/core/SimText.h"
#include "platform/sim/core/VirtualClock.h"

namespace connectkit::sim {

std::wstring SimProcesses::ProgramName(const std::wstring& commandLine) {
    size_t begin = commandLine.find_first_not_of(L' ');
    if (begin == std::wstring::npos) {
        return L"";
    }
    std::wstring executable;
    if (commandLine[begin] == L'"') {
        size_t end = commandLine.find(L'"', begin + 1);
        executable =
            commandLine.substr(begin + 1, end == std::wstring::npos ? end : end - begin - 1);
    } else {
        executable = commandLine.substr(begin, commandLine.find(L' ', begin) - begin);
    }
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
        auto found = programs_.find(ProgramName(commandLine));
        if (found == programs_.end()) {
            outcome.error = platform::kErrorFileNotFound;
            return outcome;
        }
        program = found->second;
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

void SimProcesses::Install(const std::wstring& name, Program program) {
    std::lock_guard<std::mutex> lock(mutex_);
    programs_[Lower(name)] = std::move(program);
}

void SimProcesses::Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    programs_.clear();
    history_.clear();
}

std::vector<SimProcesses::Started> SimProcesses::History() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return history_;
}

}  // namespace connectkit::sim

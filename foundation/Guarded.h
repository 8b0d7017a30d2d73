#pragma once
// An exported function's body with nothing thrown reaching the host: what
// escapes is logged as the conventions say and the failure value returned.

#include "SDK/Util/LogTool/LogTool.h"

template <typename Result, typename Call>
Result Guarded(const char* name, Result failure, const Call& call) {
    try {
        return call();
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", name);
        return failure;
    }
}

// The same for a function without a result.
template <typename Call>
void Guarded(const char* name, const Call& call) {
    try {
        call();
    } catch (...) {
        LogErrorFun("%s catch unknown exception...\n", name);
    }
}

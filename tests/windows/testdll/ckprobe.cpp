// A stand-in vendor DLL for the loader tests: one export by name, one by
// ordinal only, as the real vendor libraries have them.
extern "C" __declspec(dllexport) int ProbeAnswer() {
    return 42;
}
extern "C" int ProbeTwice(int value) {
    return 2 * value;
}

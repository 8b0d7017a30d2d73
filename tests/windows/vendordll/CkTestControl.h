#pragma once
// The one entry that the vendor DLL doubles export beyond the real vendor
// interface: tests reach it with GetProcAddress to set up the card the
// double pretends to drive and to read back what the double was asked.
// Plain C layouts, so nothing of either side's C++ runtime crosses over.

#include <cstdint>

inline constexpr char kCkTestConfigureName[] = "CkTestConfigure";

struct CkTestDriverSetup {
    uint16_t areaCode;
    uint8_t channelCount;
    uint8_t channels[255];
    uint32_t adapterCount;  // at most 8
    struct {
        int32_t handle;
        uint32_t inUse;
    } adapters[8];
    // A faulty adapter list: each replaces what the adapters give when its
    // flag is nonzero (the count word it claims, the bytes it holds).
    struct {
        uint32_t given;
        uint32_t value;
    } listCount, listBytes;
    uint32_t realtekInitialisationsBeforeReady;
};

struct CkTestDriverReport {
    // Every call since the last setup; only the first 32 are listed.
    uint32_t callCount;
    struct {
        char entry[48];
        uint32_t headerSize;
        int32_t adapter;
    } calls[32];
    // Adapter lists handed out that the process heap still holds.
    uint32_t outstandingBuffers;
};

// Applies `setup` when given (starting a fresh record), then fills `report`
// when given. 0 on success, 1 for a setup the double cannot represent.
extern "C" int CkTestConfigure(const CkTestDriverSetup* setup, CkTestDriverReport* report);

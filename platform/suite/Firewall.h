#pragma once
// The suite's synergy library: the firewall rules opened for the group
// owner's DHCP service.
class Firewall {
public:
    // True when the rules are gone (or were never there).
    static bool RemoveDHCPRules();
};

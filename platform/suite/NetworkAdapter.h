#pragma once
// The suite's hardware library: who made the PC's Wi-Fi card. Decided from
// the Wi-Fi adapter's description, as the network adapters port lists it.

enum WifiCardManuType { WIFI_CARD_INTEL = 0, WIFI_CARD_REALTEK = 1, WIFI_CARD_OTHER = 2 };

class NetworkAdapter {
public:
    static WifiCardManuType GetWifiManuType();
};

// The ten 5 GHz channels of band 46. Each reaches the station in two numberings: a high number
// that operators and planning tools may use and the radio software does not support, and the low
// number the station works with. The low number also names the candidate channel of WiFi channel
// selection that a cell on it occupies. One table for every reader: the reference tracking, the
// LTE commit checks and the band 46 normalisation.
#pragma once

#include <array>
#include <string>

namespace TibVeskCM {

struct Band46Channel {
    int high;
    int low;
    const char* candidateChannel;  // member of "WiFiChannelSelection=1:candidateChannels"
};

// In the order in which texts are searched for high numbers: the first that occurs decides.
inline constexpr std::array<Band46Channel, 10> kBand46Channels = {{
    {255244, 46890, "channel32"},
    {255444, 47090, "channel36"},
    {255644, 47290, "channel40"},
    {255844, 47490, "channel44"},
    {256044, 47690, "channel48"},
    {261094, 52740, "channel149"},
    {261294, 52940, "channel153"},
    {261494, 53140, "channel157"},
    {261694, 53340, "channel161"},
    {261894, 53540, "channel165"},
}};

// The row whose high number is `channel`, or null.
inline const Band46Channel* band46ByHigh(int channel) {
    for (const Band46Channel& row : kBand46Channels) {
        if (row.high == channel) {
            return &row;
        }
    }
    return nullptr;
}

// The row whose low number is `channel`, or null.
inline const Band46Channel* band46ByLow(int channel) {
    for (const Band46Channel& row : kBand46Channels) {
        if (row.low == channel) {
            return &row;
        }
    }
    return nullptr;
}

// The row whose high number, as decimal text, is exactly `text`, or null.
inline const Band46Channel* band46ByHighText(const std::string& text) {
    for (const Band46Channel& row : kBand46Channels) {
        if (std::to_string(row.high) == text) {
            return &row;
        }
    }
    return nullptr;
}

// The first row, in table order, whose high number occurs in `text` as a substring, or null.
inline const Band46Channel* band46HighIn(const std::string& text) {
    for (const Band46Channel& row : kBand46Channels) {
        if (text.find(std::to_string(row.high)) != std::string::npos) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace TibVeskCM

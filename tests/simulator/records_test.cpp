#include "client.h"

#include "simulator/records.h"

using namespace bmcsim;

namespace {

TEST(BmcsimRecords, GrammarOfEverySelector) {
    const std::string nvme = "00:nvme0;01:4;02:34.85 C;03:100%;04:10%;05:3%;06:1;07:2;08:3;09:4;"
                             "10:5;11:6;12:7;13:8;14:9;15:10;16:Model;17:500107608;18:S1;";
    const struct {
        int selector;
        std::string text;
        const char* flaw; // "" when the text is good
    } cases[] = {
        {192, "n/a", ""},
        {192, "FreeBSD", "ends with"},
        {195, "1;02:11:22:33:44:55;em0;N/A;::1;N/A;N/A;h;N/A;0;card;down;", ""},
        {195, "1;02:11:22:33:44:55;em0;N/A;::1;N/A;N/A;h;N/A;0;card;", "tag and separators"},
        {195, "1;02:11:22:33:44:55;em0;;::1;N/A;N/A;h;N/A;0;card;up;", "field 3 (IPv4) is"},
        {195, "1;02:11:22:33:44:5G;em0;N/A;::1;N/A;N/A;h;N/A;0;card;up;", "MAC"},
        {195, "1;02:11:22:33:44:55;em0;N/A;::1;N/A;N/A;h;N/A;0;card;UP;", "(link)"},
        {197, "37.5;", "whole"},
        {199, "HD;/dev/ada0;OK:S:F;19;", "tag and separators"},
        {199, "HD;/dev/ada0:Good:S:F;19;", "health"},
        {199, "HD;/dev/ada0:OK:S:F;3;SSD;N/A;AHCI;M;223;1;2;3;4;SATA;31;", "interface"},
        {199, "PT;/dev/ada0p1:0:N/A:N/A:512:4096;", "tag and separators"},
        {199, "BRCM_IR_VD;0;0-323;Miss;Missing;Unknown;N/A;N/A;", ""},
        {199, "BRCM_IT_PD;0;N/A:Standby:Standby:S:N/A;C0E2S5;HDD;N/A;M M;N/A;", ""},
        {199, "BRCM_IR_PD;0;N/A:OK:Onln:S:F;E2S5;HDD;N/A;M;2.00;", "location"},
        {199, "Logical;raid/r0;OPTIMAL;Other;2;1;0:1;0;", "vendor"},
        {201, "em0:<1:up;1;2;3;4;", ""},
        {201, "em0:0:down;1;0;0;0;", "no usage"},
        {202, "123", "not 4 bytes"},
        {204, "1.7.0;220503;0x01;2;;;;;;", ""}, // four time bytes that are ";"
        {204, "1.7.0;220503;0x01;3;abcd;", "no agent"},
        {206, nvme.substr(0, nvme.size() - 6), "tag and separators"},
        {206, nvme.substr(0, nvme.size() - 3) + ";", "field 18 (serial)"},
        {192, std::string(200000, 'x') + ";", "bytes long"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.text.substr(0, 80));
        expectFlaw(valueFlaw(static_cast<uint8_t>(row.selector), row.text), row.flaw);
    }
}

} // namespace

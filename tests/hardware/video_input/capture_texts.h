#pragma once

/// @file
/// The whole format texts of each path, for decoders called "tw9912 1-0044" and "adv7180 2-0021".
/// Written out, so that nothing they share with the library can be wrong in both.

namespace ZR::test {

inline constexpr char sharedPalDualLite[] =
    "'tw9912 1-0044':0 [fmt:UYVY2X8/720x576],"
    "'ipu1_csi1_mux':5 [fmt:UYVY2X8/720x576],"
    "'ipu1_csi1':0 [fmt:UYVY2X8/720x576@1/50],"
    "'ipu1_csi1':2 [fmt:AYUV32/720x576@1/50]";

inline constexpr char sharedNtscDualLite[] =
    "'tw9912 1-0044':0 [fmt:UYVY2X8/720x480],"
    "'ipu1_csi1_mux':5 [fmt:UYVY2X8/720x480],"
    "'ipu1_csi1':0 [fmt:UYVY2X8/720x480@1/50],"
    "'ipu1_csi1':2 [fmt:AYUV32/720x480@1/50]";

inline constexpr char sharedPalQuad[] =
    "'tw9912 1-0044':0 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu2_csi1_mux':2 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu2_csi1':0 [fmt:UYVY2X8/720x576@1/50 field:none],"
    "'ipu2_csi1':2 [fmt:AYUV32/720x576@1/50 field:none]";

inline constexpr char sharedNtscQuad[] =
    "'tw9912 1-0044':0 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu2_csi1_mux':2 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu2_csi1':0 [fmt:UYVY2X8/720x480@1/50 field:none],"
    "'ipu2_csi1':2 [fmt:AYUV32/720x480@1/50 field:none]";

inline constexpr char secondPalDualLite[] =
    "'adv7180 2-0021':0 [fmt:UYVY2X8/720x576 field:none],"
    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576 field:none],"
    "'imx6-mipi-csi2':1 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu1_csi0_mux':5 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu1_csi0':0 [fmt:UYVY2X8/720x576@1/50 field:none],"
    "'ipu1_csi0':2 [fmt:AYUV32/720x576@1/50 field:none],";

inline constexpr char secondNtscDualLite[] =
    "'adv7180 2-0021':0 [fmt:UYVY2X8/720x480 field:none],"
    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x480 field:none],"
    "'imx6-mipi-csi2':1 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu1_csi0_mux':5 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu1_csi0':0 [fmt:UYVY2X8/720x480@1/50 field:none],"
    "'ipu1_csi0':2 [fmt:AYUV32/720x480@1/50 field:none],";

inline constexpr char secondPalQuad[] =
    "'adv7180 2-0021':0 [fmt:UYVY2X8/720x576 field:none],"
    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x576 field:none],"
    "'imx6-mipi-csi2':1 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu1_csi0_mux':2 [fmt:UYVY2X8/720x576 field:none],"
    "'ipu1_csi0':0 [fmt:UYVY2X8/720x576@1/50 field:none],"
    "'ipu1_csi0':2 [fmt:AYUV32/720x576@1/50 field:none],";

inline constexpr char secondNtscQuad[] =
    "'adv7180 2-0021':0 [fmt:UYVY2X8/720x480 field:none],"
    "'imx6-mipi-csi2':0 [fmt:UYVY2X8/720x480 field:none],"
    "'imx6-mipi-csi2':1 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu1_csi0_mux':2 [fmt:UYVY2X8/720x480 field:none],"
    "'ipu1_csi0':0 [fmt:UYVY2X8/720x480@1/50 field:none],"
    "'ipu1_csi0':2 [fmt:AYUV32/720x480@1/50 field:none],";

}  // namespace ZR::test

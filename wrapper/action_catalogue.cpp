// The action catalogue and the opcode tables of the wrapper: fixed data, made at load time and
// only read afterwards.

#include "QelWrapper.h"
#include "wrapper/action_index.h"
#include "wrapper/opcode_tables.h"

// A name's position is the command id the service knows it by. The list is not a set: the four
// "ACTION_CAMERA_APS_CAPTURE_L*" names stand at 91-94 and again at 106-109, and
// "ACTION_CAMERA_MULTI_SCENE" at 102 and again at 162; the second copies hold their positions
// for the names after them and are never found by a look-up. Spellings are the service's own
// ("STIKER" at 78, "PORTAIT" at 120) and must not be corrected.
std::vector<std::string> gActionList = {
        // 0
        "ACTION_LAUNCH",
        "ACTION_COLD_LAUNCH",
        "ACTION_ACTIVITY_START",
        "ACTION_ACTIVITY_RESUME",
        "ACTION_ACTIVITY_FINISH",
        "ACTION_WINDOW_ROTATION",
        "ACTION_SWIPE_V",
        "ACTION_SWIPE_H",
        "ACTION_DECODE",
        "ACTION_COMPRESS",
        // 10
        "ACTION_BLUETOOTH",
        "ACTION_CAMERA_OPEN",
        "ACTION_CAMERA_CLOSE",
        "ACTION_MTP_BOOST",
        "ACTION_HARDCODER_L1",
        "ACTION_HARDCODER_L2",
        "ACTION_HARDCODER_L3",
        "ACTION_CAMERA_PREVIEW",
        "ACTION_CAMERA_CAPTURE",
        "ACTION_CAMERA_VIDEO",
        // 20
        "ACTION_CAMERA_SLOW_720P",
        "ACTION_CAMERA_SLOW_1080P",
        "ACTION_CAMERA_FRONT_PREVIEW",
        "ACTION_CAMERA_VIDEO_PREVIEW_60FPS",
        "ACTION_CAMERA_VIDEO_PREVIEW_VIRTUAL",
        "ACTION_CAMERA_VIDEO_PREVIEW_EIS",
        "ACTION_CAMERA_VIDEO_EIS_60FPS",
        "ACTION_CAMERA_VIDEO_4K",
        "ACTION_KIVANE_GAME_LOADING",
        "ACTION_KIVANE_GAME_BOOST_L1",
        // 30
        "ACTION_KIVANE_GAME_BOOST_L2",
        "ACTION_KIVANE_GAME_BOOST_L3",
        "ACTION_TURBAX_GPU_BOOST",
        "ACTION_TURBAX_CPU_BOOST_L1",
        "ACTION_TURBAX_CPU_BOOST_L2",
        "ACTION_TURBAX_CPU_BOOST_L3",
        "ACTION_TURBAX_DDR_BOOST",
        "ACTION_TOUCH_BOOST",
        "ACTION_SCREEN_ON_BOOST",
        "ACTION_INPUT_METHOD_BOOST",
        // 40
        "ACTION_STORAGE_BOOST",
        "ACTION_UNLOCK_BOOST",
        "ACTION_ANIMATION",
        "ACTION_CAMERA_VIDEO_UHD60",
        "ACTION_CAMERA_PREVIEW_VIDEO_EIS",
        "ACTION_CAMERA_VIDEO_HD30",
        "ACTION_CAMERA_VIDEO_FHD30",
        "ACTION_CAMERA_VIDEO_UHD30",
        "ACTION_CAMERA_3RD_PARTY",
        "ACTION_CLEAN_UP",
        // 50
        "ACTION_SCREEN_SHOT",
        "ACTION_INSTALLATION",
        "ACTION_RECORD",
        "ACTION_CAMERA_FRONT_PREVIEW_PHOTO",
        "ACTION_LUCKY_MONEY",
        "ACTION_CAMERA_APS_CAPTURE",
        "ACTION_FACE_UNLOCK",
        "ACTION_CAMERA_SLOW_CAPTURE",
        "ACTION_VOICE_WAKEUP",
        "ACTION_3RD_CAM_WECHAT_VIDEO_CALL",
        // 60
        "ACTION_FILE_SCANNER",
        "ACTION_WATERMARK_ANIMATION",
        "ACTION_3RD_CAM_VIDEO_CALL",
        "ACTION_3RD_CAM_VIDEO_RECORDER",
        "ACTION_VFX_BOOST",
        "ACTION_FOREGROUND_BOOST",
        "ACTION_CAMERA_GIFMAKER",
        "ACTION_DEFAULT_PLAYER",
        "ACTION_SWIPE_SLOW_V",
        "ACTION_SWIPE_SLOW_H",
        // 70
        "ACTION_CAMERA_VIDEO_720P",
        "ACTION_SIM_INIT",
        "ACTION_3RD_CAM_WHATSAPP_VIDEO_CALL",
        "ACTION_CTS_PERF",
        "ACTION_SWIPE_SLOW_EXTEND",
        "ACTION_LAUNCHER_GPU_BOOST",
        "ACTION_FILE_COPY_CUT",
        "ACTION_FILE_ZIP_UNZIP",
        "ACTION_CAMERA_STIKER_RECORD",
        "ACTION_CAMERA_3RD_PARTY_LOW_POWER",
        // 80
        "ACTION_SWIPE_RECENT",
        "ACTION_INPUT_BOOST_EXTEND",
        "ACTION_CAMERA_3RD_PARTY_COMMON",
        "ACTION_CAMERA_VIDEO_PREVIEW_30FPS",
        "ACTION_GESTURE_ANIMATION",
        "ACTION_LAUNCHER_OPEN_APP_ANIMATION",
        "ACTION_LAUNCHER_CLOSE_APP_ANIMATION",
        "ACTION_CAMERA_VIDEO_UHD60_CAMERAUNIT",
        "ACTION_CAMERA_3RD_PARTY_EXPORT",
        "ACTION_CAMERA_3RD_PARTY_LOW_POWER_EXPORT",
        // 90
        "ACTION_CAMERA_3RD_PARTY_MIDDLE_POWER",
        "ACTION_CAMERA_APS_CAPTURE_L1",
        "ACTION_CAMERA_APS_CAPTURE_L2",
        "ACTION_CAMERA_APS_CAPTURE_L3",
        "ACTION_CAMERA_APS_CAPTURE_L4",
        "ACTION_CAMERA_3RD_PARTY_HIGH_POWER",
        "ACTION_CAMERA_3RD_PARTY_SUPER_POWER",
        "ACTION_SYSTEM_UI_SWIPE",
        "ACTION_CAMERA_VIDEO_AI_ENHANCE",
        "ACTION_CAMERA_VIDEO_GIFMAKER_REAR",
        // 100
        "ACTION_CAMERA_REAR_VIDEO_1080P",
        "ACTION_CAMERA_REAR_VIDEO_SUPER_EIS",
        "ACTION_CAMERA_MULTI_SCENE",
        "ACTION_CAMERA_MOVIE",
        "ACTION_CAMERA_3RD_PARTY_PERF",
        "ACTION_VIRTUAL_KEY",
        "ACTION_CAMERA_APS_CAPTURE_L1",
        "ACTION_CAMERA_APS_CAPTURE_L2",
        "ACTION_CAMERA_APS_CAPTURE_L3",
        "ACTION_CAMERA_APS_CAPTURE_L4",
        // 110
        "ACTION_ROTATION_LATENCY_BOOST",
        "ACTION_VERTICAL_SCROLL_BOOST",
        "ACTION_PREFLING_SCROLL_BOOST",
        "ACTION_HORIZONTAL_SCROLL_BOOST",
        "ACTION_CAMERA_VIDEO_SUPER_EIS",
        "ACTION_CAMERA_3RD_PARTY_WECHAT_SMALL_WINDOW",
        "ACTION_CAMERA_MOVIE_ULTRA_WIDE",
        "ACTION_SIDEBAR_SLIDEOUT_BOOST",
        "ACTION_3RD_CAM_VIDEO_MIDPERF",
        "ACTION_3RD_CAM_VIDEO_HIGHPERF",
        // 120
        "ACTION_CAMERA_PREVIEW_PORTAIT",
        "ACTION_CAMERA_MEITU",
        "ACTION_CAMERA_FRONT_EIS",
        "ACTION_CAMERA_VIDEO_BLUR",
        "ACTION_WFD",
        "ACTION_AUDIO_BOOST_L1",
        "ACTION_AUDIO_BOOST_L2",
        "ACTION_AUDIO_BOOST_L3",
        "ACTION_CAMERA_CONTINUOUS_CAPTURE",
        "ACTION_CAMERA_3RD_PARTY_SPECIAL_APP",
        // 130
        "ACTION_CAMERA_VIDEO_FRONT_NEON_BEAUTY",
        "ACTION_CAMERA_VIDEO_FRONT_BLUR_BEAUTY",
        "ACTION_CAMERA_FRONT_PREVIEW_30FPS",
        "ACTION_CAMERA_FRONT_PREVIEW_30FPS_FACE_NUM_2",
        "ACTION_CAMERA_VIDEO_BACK_NEON_BEAUTY",
        "ACTION_CAMERA_SUPERNIGHT",
        "ACTION_CAMERA_PREVIEW_800_400",
        "ACTION_LAUNCHER_ICON_EDIT",
        "ACTION_VIDEO_PLAY_BOOST",
        "ACTION_CAMERA_VIDEO_HFR_480FPS",
        // 140
        "ACTION_CAMERA_VIDEO_8K30",
        "ACTION_CAMERA_VIDEO_SUPER_STEADY",
        "ACTION_CAMERA_VIDEO_UHD120",
        "ACTION_CAMERA_VIDEO_HFR_240FPS",
        "ACTION_CAMERA_VIDEO_SAT",
        "ACTION_CAMERA_VIDEO_MACRO_PREVIEW",
        "ACTION_CAMERA_48M_PREVIEW",
        "ACTION_CAMERA_CTS_PREVIEW",
        "ACTION_CAMERA_STICKER_MODE",
        "ACTION_EPS_FALLBACK_BOOST",
        // 150
        "ACTION_CAMERA_CAPTURE_LOWPOWER",
        "ACTION_CAMERA_MODE_CHANGE",
        "ACTION_LAUNCHER_ICON_FALLEN",
        "ACTION_ZOOMWINDOW_DRAG",
        "ACTION_CAMERA_PREVIEW_RAWSR",
        "ACTION_CAMERA_CAPTURE_RAWSR",
        "ACTION_ROUND_CORNER_ANIMATION",
        "ACTION_STYLUS_OPERATE",
        "ACTION_CAMERA_SUPERTEXT_CAPTURE",
        "ACTION_CAMERA_FRONT_VIDEO_BOKEH",
        // 160
        "ACTION_CAMERA_VIDEO_FHD30_BOKEH",
        "ACTION_CAMERA_VIDEO_FHD30_TIMELAPSE",
        "ACTION_CAMERA_MULTI_SCENE",
        "ACTION_CAMERA_FRONT_NIGHT_CAPTURE",
        "ACTION_CAMERA_NIGHT_CAPTURE",
        "ACTION_HINT_ANIMATION",
        "ACTION_CAMERA_3RD_PARTY_TIKTOK",
        "ACTION_CAMERA_FRONT_NIGHT_UI",
        "ACTION_CAMERA_APS_ICE2P0_CAPTURE",
        "ACTION_CAMERA_STICKER_ANIMOJI_PREVIEW",
        // 170
        "ACTION_CAMERA_CAPTURE_FILTER_BEAUTY",
        "ACTION_CAMERA_REAR_PORTRAIT_PREVIEW",
        "ACTION_OTA_PANEL_OPEN",
        "ACTION_KIVANE_GAME_BG",
        "ACTION_CAMERA_DUALVIEW_VIDEO",
        "ACTION_CAST_SCREENOFF_DISABLE_DISPLAY_VOTE",
        "ACTION_CAMERA_LONG_EXPOSURE",
        "ACTION_CAMERA_FRONT_PREVIEW_PORTRAIT",
        "ACTION_CAMERA_FRONT_CAPTURE",
        "ACTION_CAMERA_FRONT_VIDEO_EIS",
        // 180
        "ACTION_CAMERA_AI_VIDEO",
        "ACTION_CAMERA_ZOOM",
        "ACTION_CAMERA_APS_THDR_CAPTURE",
        "ACTION_CAMERA_LOWPOWER",
        "ACTION_BACKUP_RESTORE",
        "ACTION_CAMERA_VIDEO_BOKEH_24FPS",
        "ACTION_MULTI_USER_SWITCH",
        "ACTION_EXTREME_COLD_MODE",
        "ACTION_HIGHLIGHT_BOOST",
        "ACTION_CAMERA_3RD_WECHAT_SCAN",
        // 190
        "ACTION_CAMERA_APS_THDR_CAPTURE_L1",
        "ACTION_CAMERA_THDR_CAPTURE",
        "ACTION_LIVE_WALLPAPER",
        "ACTION_CAST",
        "ACTION_ASSISTANT_SCROLL_BOOST",
        "ACTION_CAMERA_APS_BOKEH_CAPTURE",
        "ACTION_GAME_ASSISTANT_SLIDE",
        "ACTION_CAMERA_APS_INNER_THDR_CAPTURE",
        "ACTION_CAMERA_APS_INNER_THDR_CAPTURE_L1",
};

namespace qel_wrapper {

// Made after the catalogue it indexes: both are initialised in this order, at load time.
const ActionIndex gActionIndex(gActionList);

// clang-format off
int32_t gOpCodeBlock[kOpCodeWords] = {
        0x010108A0, 0x010108B0, 0x010108C0,              // opCodeTargetLoad
        0x01010B10, 0x01010B20, 0x01010B30, 0x01020070,  // opCodeAdpXpuCoreBoost
        0x01010B90, 0x01010BA0, 0x01010BB0, 0x01020080,  // opCodeAdpXpuCoreLimit
        0x01010010, 0x01010020, 0x01010030, 0x01020050,  // opCodeAdpXpuFreqBoost
        0x010100A0, 0x010100B0, 0x010100C0, 0x01020060,  // opCodeAdpXpuFreqLimit
};
// clang-format on

}  // namespace qel_wrapper

// Export each table as a sized data symbol at its offset in the block. C++ cannot name a slice
// of an array as an array of its own, so the symbols are made by the assembler; the directives
// are the same for every ELF target (x86-64 and AArch64 alike).
// clang-format off
#define QEL_OPCODE_TABLE(name, word, words)                      \
    asm(".globl " #name "\n"                                     \
        ".type " #name ", STT_OBJECT\n"                          \
        ".set " #name ", qel_opcode_block + 4 * " #word "\n"     \
        ".size " #name ", 4 * " #words "\n")
// clang-format on

QEL_OPCODE_TABLE(opCodeTargetLoad, 0, 3);
QEL_OPCODE_TABLE(opCodeAdpXpuCoreBoost, 3, 4);
QEL_OPCODE_TABLE(opCodeAdpXpuCoreLimit, 7, 4);
QEL_OPCODE_TABLE(opCodeAdpXpuFreqBoost, 11, 4);
QEL_OPCODE_TABLE(opCodeAdpXpuFreqLimit, 15, 4);

pragma Singleton

import QtQuick
import Velmora.Views

// Colours, type, motion: what every view draws with.
QtObject {
    id: theme

    readonly property bool isDark: Appearance.isDark
    readonly property bool isPlain: Appearance.hasHighContrast

    readonly property color windowTop: isDark ? "#1C2126" : "#FBFBF9"
    readonly property color windowBottom: isDark ? "#15181C" : "#F5F5F2"
    readonly property color surface: isDark ? "#252A30" : "#FFFFFF"
    readonly property color raised: isDark ? "#2F353C" : "#ECEEEB"
    readonly property color field: isDark ? "#181C20" : "#FFFFFF"
    readonly property color fieldLine: isDark ? "#7D8791" : "#7E878C"
    readonly property color line: isPlain ? fieldLine : isDark ? "#3A4149" : "#D9DDDA"
    readonly property color warnFill: isDark ? "#37301F" : "#FAF0D8"
    readonly property color scrim: isDark ? "#80000000" : "#57000000"

    readonly property color bubble: "#15181C"
    readonly property color bubbleEdge: "#33FFFFFF"
    readonly property color tip: "#0E1114"
    readonly property color wordOnTip: "#F2F4F5"
    readonly property color disc: "#940C0E11"
    readonly property color dropTint: "#E012443F"
    readonly property color dropFrame: "#A6FFFFFF"

    // Over the backdrop, from top to bottom.
    readonly property color dimTop: isPlain ? "#E6000000" : "#73000000"
    readonly property color dimMiddle: isPlain ? "#E6000000" : "#99000000"
    readonly property color dimBottom: isPlain ? "#E6000000" : "#D9000000"

    readonly property Inks window: Inks {
        text: theme.isDark ? "#F2F4F5" : "#1A1F22"
        text2: theme.isPlain ? text : theme.isDark ? "#B6BEC5" : "#515B61"
        off: theme.isDark ? "#737C84" : "#929A9E"
        accent: theme.isDark ? "#67CDBD" : "#0B6F63"
        danger: theme.isDark ? "#FF8F86" : "#B3261E"
        warning: theme.isDark ? "#F2BE5C" : "#7A5200"
        solid: accent
        wordOnSolid: theme.isDark ? "#06231F" : "#FFFFFF"
        fill: theme.raised
        fillPressed: theme.raised
        lit: theme.line
        disabledFill: theme.raised
        line: theme.line
        track: theme.line
        tickOnPlayed: theme.isDark ? "#F2F4F5" : "#FFFFFF"
        focus: theme.isDark ? "#8FE3D6" : "#0B6F63"
        focusGap: "transparent"
        sinksWhenPressed: false
    }

    readonly property Inks imagery: Inks {
        text: "#FFFFFF"
        text2: theme.isPlain ? text : "#D6FFFFFF"
        off: "#6BFFFFFF"
        accent: "#7FDCCD"
        danger: "#FF8F86"
        warning: "#FFCF7A"
        solid: "#FFFFFF"
        wordOnSolid: "#15181C"
        fill: "#24FFFFFF"
        fillPressed: "#0FFFFFFF"
        lit: "#38FFFFFF"
        disabledFill: "#14FFFFFF"
        line: "#29FFFFFF"
        track: "#47FFFFFF"
        tickOnPlayed: "#FFFFFF"
        focus: "#FFFFFF"
        focusGap: "#B30A0C0E"
        sinksWhenPressed: true
    }

    readonly property real textScale: Appearance.textScale
    readonly property int titleSize: Math.round(22 * textScale)
    readonly property int smallTitleSize: Math.round(18 * textScale)
    readonly property int titleLine: Math.max(28, Math.ceil(28 * textScale))
    readonly property int headingSize: Math.round(17 * textScale)
    readonly property int headingLine: Math.max(24, Math.ceil(24 * textScale))
    readonly property int bodySize: Math.round(14 * textScale)
    readonly property int bodyLine: Math.max(20, Math.ceil(20 * textScale))
    readonly property int statusSize: Math.round(13 * textScale)
    readonly property int statusLine: Math.max(18, Math.ceil(18 * textScale))
    readonly property int captionSize: Math.round(12 * textScale)
    readonly property int captionLine: Math.max(16, Math.ceil(16 * textScale))
    readonly property int codeSize: Math.round(24 * textScale)

    readonly property int columnWidth: 560
    readonly property int wordsWidth: 440
    readonly property int padding: 24

    readonly property bool animates: Appearance.animates
    readonly property int quick: animates ? 120 : 0
    readonly property int dragMotion: animates ? 150 : 0
    readonly property int hoverMotion: animates ? 213 : 0
    readonly property int backdropMotion: animates ? 300 : 0
    readonly property int modeMotion: animates ? 422 : 0
    readonly property int screenMotion: animates ? 475 : 0
    readonly property int phaseMotion: animates ? 633 : 0
    // A spring without and one with a little overshoot.
    readonly property var settling: [0.226, 0.173, 0.193, 1, 1, 1]
    readonly property var lively: [0.235, 0.062, 0.344, 0.937, 1, 1]
}

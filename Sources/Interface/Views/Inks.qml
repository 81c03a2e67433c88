import QtQuick

// The colours that stand on one kind of ground: the window, or a movie's picture.
QtObject {
    required property color text
    required property color text2
    required property color off
    required property color accent
    required property color danger
    required property color warning
    // What the application waits for to be pressed, and the words on it.
    required property color solid
    required property color wordOnSolid
    required property color fill
    required property color fillPressed
    required property color lit
    required property color disabledFill
    required property color line
    required property color track
    required property color tickOnPlayed
    required property color focus
    required property color focusGap
    // Controls that are not solid get darker when they are pressed, not lighter.
    required property bool sinksWhenPressed
}

import QtQuick

// Text that screen readers read out too: a plain Qt Quick text is no element of theirs, as
// a control's label is. A `notice` (an error, a grade) is announced as it appears.
Text {
    property bool notice: false

    Accessible.role: notice ? Accessible.Notification : Accessible.StaticText
    Accessible.name: text
}

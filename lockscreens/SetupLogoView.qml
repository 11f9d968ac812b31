import QtQuick

LogoView {}

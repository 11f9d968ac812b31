import QtQuick
import Morvanta.LockScreens

LogoView {}

# SPDX-License-Identifier: MIT
# The adapters for macOS by language. Tests on other systems take the same lists.
set(macos_cxx_sources
    base/ChildWatch.cpp base/ChildWatch.h
    base/CoreFoundationHandle.h
    base/MacBundleTools.cpp base/MacBundleTools.h
    base/OsLog.cpp base/OsLog.h
    base/TerminationEvents.cpp base/TerminationEvents.h
    input/CarbonHotKeyService.cpp input/CarbonHotKeyService.h
    input/QuartzKeyboardSynthesizer.cpp input/QuartzKeyboardSynthesizer.h
    session/AccessibilityTrust.cpp session/AccessibilityTrust.h
    session/LocalSocket.cpp session/LocalSocket.h
    session/SocketRemoteControl.cpp session/SocketRemoteControl.h
    sound/AfconvertWavConverter.cpp sound/AfconvertWavConverter.h
    sound/TapStream.cpp sound/TapStream.h)

# What also needs the toolkit's windows.
set(macos_toolkit_sources
    MacPlatform.cpp MacPlatform.h
    desktop/MacFloatingPanels.cpp desktop/MacFloatingPanels.h
    desktop/MacStatusItemHost.h)

set(macos_objc_sources
    base/Errors.h base/Strings.h
    base/MacBundle.h base/MacBundle.mm
    base/MacDirectories.h base/MacDirectories.mm
    base/MacSystemVersion.h base/MacSystemVersion.mm
    base/MacUserDefaults.h base/MacUserDefaults.mm
    desktop/MacScreens.h desktop/MacScreens.mm
    desktop/PanelWindow.h desktop/PanelWindow.mm
    input/MacPasteboard.h input/MacPasteboard.mm
    session/MacLoginItem.h session/MacLoginItem.mm
    session/MacPermissions.h session/MacPermissions.mm
    session/MacWorkspace.h session/MacWorkspace.mm
    sound/EngineAudioInput.h sound/EngineAudioInput.mm
    sound/MacSounds.h sound/MacSounds.mm)

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>AboutSheet</name>
    <message>
        <source>Done</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Morvanta</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ActionBar</name>
    <message>
        <source>Add to Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Actions</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AlertDialog</name>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AnswerField</name>
    <message>
        <source>Answer</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AppIdentity</name>
    <message>
        <source>Sign in to your workspace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Arithmetic practice</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep sensitive files, folders and apps in one encrypted vault</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>BrowserTexts</name>
    <message>
        <source>Auto-lock: off</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Auto-lock: %1m</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 item</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 — %2 of %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 — %2%</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, %2 of %3 items</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a new name for this item.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a new name. The “.%1” extension is kept so the item still opens correctly.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” will be moved out of the vault back to:

%2/%1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>its original location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The vault holds the only copy of “%1” — deleting it erases it from your computer entirely. This can’t be undone.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock vault (%1)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CalloutCard</name>
    <message>
        <source>Dismiss</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CommandLine</name>
    <message>
        <source>Morvanta keeps sensitive files, folders and apps in one encrypted vault.
Started without options, it opens its window (or brings forward the one already open).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show these options and exit.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show the version and exit.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock the vault of the running Morvanta and exit. Succeeds also when Morvanta is not running or the vault is locked already.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 See morvanta --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unexpected argument &apos;%1&apos;. See morvanta --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing to do. See morvanta --help.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not lock the vault: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No display to open the window on: neither WAYLAND_DISPLAY nor DISPLAY is set. See morvanta --help.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DisguiseMode</name>
    <message>
        <source>Workspace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Calculator</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EmptyState</name>
    <message>
        <source>Vault is empty</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drag files, folders, or apps into the vault, or click &quot;Add to Vault&quot; to encrypt them.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>GearMenu</name>
    <message>
        <source>Back Up Vault…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change Password...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Auto-lock</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>1 minute</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>5 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>15 minutes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Never</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Disguise</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ItemTable</name>
    <message>
        <source>Vault items</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ItemTableModel</name>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kind</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date Added</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MathQuiz</name>
    <message>
        <source>%1 %2 %3 = ?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Correct!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Try again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Checking...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Submit</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MathQuizUnlockView</name>
    <message>
        <source>Quick Math</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PasswordChangeForm</name>
    <message>
        <source>Changing...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Change Password</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PasswordChangeView</name>
    <message>
        <source>Change Master Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vault will stay unlocked after the password changes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Current password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confirm new password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PasswordSheet</name>
    <message>
        <source>Change Master Password</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ProgressStrip</name>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RenameDialog</name>
    <message>
        <source>Rename item</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SetupForm</name>
    <message>
        <source>At least 8 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Weak password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fair password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Strong password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Very strong.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create account</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set password to continue. Cannot be recovered if lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Set master password. Cannot be recovered if lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Master password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password is the only key.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vault encrypted with AES-256. Password is the only key.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Creating...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password must be at least 8 characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passwords do not match.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SetupView</name>
    <message>
        <source>Confirm password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passwords do not match.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TableHeaderCell</name>
    <message>
        <source>Sorted ascending</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sorted descending</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UnlockForm</name>
    <message>
        <source>Sign in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter password to continue.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter your master password to access vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Master password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Signing in...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlocking...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unlock</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VaultBrowser</name>
    <message>
        <source>None (Branded)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Neutral</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Math Quiz</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rename…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restore to Original Location</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Out…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add to Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move Here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose destination outside the vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back Up Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Back Up</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save an encrypted backup of your vault. It opens with your master password.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Renamed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restored to original location.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Deleted permanently.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Encrypted backup saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password changed.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VaultError</name>
    <message>
        <source>Authentication failed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Create failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>IO failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” can’t be added — it’s a protected system item, or you don’t have permission to move it from its current location.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” wasn’t added — its original couldn’t be removed from its current location (the administrator prompt was cancelled or failed). Nothing was left in the vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vault already exists.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vault not initialized.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Current password is incorrect.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vault not mounted.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VaultHeader</name>
    <message>
        <source>Vault</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Morvanta</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Settings</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VaultManager</name>
    <message>
        <source>“%1” is a name the vault keeps for itself. Rename the item, then add it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Item with same name already in vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” changed while it was being added, so it was left where it was and not added.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Couldn’t record where items came from: %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a valid name (no “/”).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is a name the vault keeps for itself. Choose another name.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>An item named “%1” is already in the vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Item is not inside the vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Original location is unknown for this item.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Original folder no longer exists:
%1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Something already exists at the original location:
%1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File with same name exists at destination.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is at its new place, but not all of it could be taken out of the vault (it changed or was added to during the move, or could not be removed). Still in the vault:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” is in the vault, but not all of it could be taken from its original place (it changed or was added to during the move, or could not be removed). Still there:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ɪnd %1 more</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passwords can’t be empty.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passwords can’t contain line breaks or NUL characters.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passwords can’t be longer than 2048 bytes.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Password change failed: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not reopen vault: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wrong password or corrupt vault.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not determine mount point.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>VaultView</name>
    <message>
        <source>Restore to original location?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restore</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete permanently?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WelcomeNavBar</name>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WelcomePager</name>
    <message>
        <source>Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your Private Vault for macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your Private Vault for Linux</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock everything instantly with ⌘L, or let auto-lock handle it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AES-256 encryption powered by Apple&apos;s own disk technology.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locked files — and even apps — vanish from Finder, Spotlight, and Terminal.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Native macOS</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Built with SwiftUI. Fast, lightweight, no bloat.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only you hold the key. Nothing leaves your Mac.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lock everything instantly with Ctrl+L, or let auto-lock handle it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>AES-256 encryption powered by gocryptfs, a proven open-source encryptor.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Locked files — and even apps — vanish from your file manager, search, and terminal.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Native Linux</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Built with Qt. Fast, lightweight, no bloat.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only you hold the key. Nothing leaves your computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bank-grade security</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Truly invisible</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>One password</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Your data stays yours</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>100% offline. No cloud. No accounts. No tracking.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Zero-knowledge</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gear menu → Back Up Vault saves one encrypted file you can store anywhere. It opens in Finder with your master password, even without Morvanta — so reinstalling or removing the app won&apos;t cost you your files. (A backup still needs the password; it isn&apos;t a way to recover a forgotten one.)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Gear menu → Back Up Vault saves one encrypted file you can store anywhere. It opens in any archive manager with your master password, even without Morvanta — so reinstalling or removing the app won&apos;t cost you your files. (A backup still needs the password; it isn&apos;t a way to recover a forgotten one.)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>WelcomeView</name>
    <message>
        <source>Get Started</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Welcome to Morvanta</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep sensitive files safe behind one master password. Morvanta turns any file, folder, or app into an encrypted, invisible vault — protected by AES-256 encryption used by banks and governments.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Why Morvanta?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before you begin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Perfect for</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Tax documents · Passwords · Personal photos · Client files · Legal records · Apps · Anything you&apos;d hate to lose or expose.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Forget your password, forget your files.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There&apos;s no &quot;forgot password&quot; link. No recovery email. No backdoor. That&apos;s not a bug — it&apos;s the whole point. Choose a password you&apos;ll remember.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep a backup.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>

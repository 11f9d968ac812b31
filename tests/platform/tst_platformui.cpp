// The desktop's file pickers and file icons for real: Qt's own file dialogs run offscreen and
// are answered from a timer, as a person would answer them, and the panel program runs as the
// window starts it.

#include "platform/Panels.h"
#include "platform/panel/PanelDialog.h"
#include "platform/Workspace.h"
#include "support/Trees.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// What the panel program would answer to `request` once `work` has had its dialog, waited
// for while the event loop runs; nothing when it never answers. The request and the answer
// go through the same encoding as between the two processes. A dialog `work` leaves open is
// cancelled, so that a test fails instead of waiting forever.
std::optional<QStringList> answerOf(const platform::PanelRequest& request,
                                    const std::function<void(QFileDialog*)>& work) {
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            poll.stop();
            work(dialog);
            if (dialog->isVisible())
                dialog->reject();
        }
    });
    poll.start(20);
    std::optional<QStringList> answer;
    platform::showPanelDialog(*platform::decodePanelRequest(platform::encodePanelRequest(request)),
                              [&](const QStringList& chosen) {
                                  answer = platform::decodePanelAnswer(platform::encodePanelAnswer(chosen));
                              });
    (void)QTest::qWaitFor([&] { return answer.has_value(); }, 20000);
    return answer;
}

// Counts the keys that reach it.
struct KeyCountingWindow : QWindow {
    int keys = 0;
    bool event(QEvent* event) override {
        keys += event->type() == QEvent::KeyPress;
        return QWindow::event(event);
    }
};

} // namespace

class TestPlatformUi : public QObject {
    Q_OBJECT

private slots:
    // The desktop's own dialogs where the portal can show them, never over a platform theme
    // the user chose.
    void portalDialogsOnGnomeAndKde() {
        using platform::portalFileDialogsWanted;
        QVERIFY(portalFileDialogsWanted("ubuntu:GNOME", {}, true) && portalFileDialogsWanted("KDE", {}, true));
        QVERIFY(!portalFileDialogsWanted("KDE", "kde", true) && !portalFileDialogsWanted("GNOME", {}, false));
        QVERIFY(!portalFileDialogsWanted("XFCE", {}, true));
    }

    // Files and folders in one pick: a folder chosen in the list is taken, not opened, and the
    // button says so; one typed is opened. A save panel proposes the name and type and says
    // what it is for.
    void panelsAnswerAsTheUserChose() {
        QTemporaryDir dir;
        const QString photos = dir.filePath("Photos");
        QDir().mkpath(photos);
        QCOMPARE(answerOf({platform::OpenPanelOptions{true, true, true, "Add to Vault", {}}}, [&](QFileDialog* dialog) {
                     QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFiles);
                     // A folder's name typed and Return: into the folder, as in any file dialog.
                     dialog->setDirectory(dir.path());
                     auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
                     name->setFocus();
                     QTRY_VERIFY(name->hasFocus());
                     QTest::keyClicks(name, "Photos");
                     const QPointer<QFileDialog> still(dialog);
                     QTest::keyClick(name, Qt::Key_Return);
                     QTRY_VERIFY(still && still->directory().absolutePath() == photos);
                     // Selected as a click would, once the folder has been read (the name field
                     // ignores a selection made while it has the focus).
                     dialog->setDirectory(dir.path());
                     if (QWidget* focused = dialog->focusWidget())
                         focused->clearFocus();
                     QVERIFY(QTest::qWaitFor([&] {
                         dialog->selectFile(photos);
                         return dialog->selectedFiles() == QStringList(photos);
                     }));
                     auto* list = dialog->findChild<QListView*>("listView");
                     QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                                       list->visualRect(list->currentIndex()).center());
                     QPushButton* accept = dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
                     QTRY_COMPARE(accept->text(), "Add to Vault");
                     QMetaObject::invokeMethod(dialog, "accept");
                 }),
                 QStringList(photos));

        const platform::SavePanelOptions options{"Back Up Vault", "Back Up", "Save an encrypted backup.",
                                                 "MorvantaVault-Backup.7z", {"application/x-7z-compressed"}};
        QCOMPARE(answerOf({options}, [&](QFileDialog* dialog) {
                     QCOMPARE(dialog->findChild<QLabel*>("panelMessage")->text(), options.message);
                     QCOMPARE(dialog->nameFilters().size(), 1);
                     QVERIFY2(dialog->nameFilters().first().contains("*.7z"),
                              qPrintable(dialog->nameFilters().first()));
                     dialog->setDirectory(dir.path());
                     QMetaObject::invokeMethod(dialog, "accept");
                 }),
                 QStringList(dir.filePath("MorvantaVault-Backup.7z")));
        QCOMPARE(answerOf({options}, [](QFileDialog* dialog) { dialog->reject(); }), QStringList());

        // It says it is the window's: a disguised window's panel wears the disguise.
        const platform::PanelRequest worn{{options}, 7, "Workspace", "workspace", "\x89PNG\r\n"};
        const auto read = platform::decodePanelRequest(platform::encodePanelRequest(worn));
        QVERIFY(read->parentWindow == 7 && read->applicationName == "Workspace");
        QVERIFY(read->desktopFileName == "workspace" && read->iconPng == worn.iconPng);
    }

    // The panel program for real: while it shows a panel the window takes no keys; a lock
    // replaces the screen that asked, and the panel closes, nothing chosen arrives and the
    // window takes keys again.
    void aPanelHoldsTheWindowUntilItsOwnerGoes() {
        KeyCountingWindow window;
        window.show();
        platform::Panels panels;
        auto owner = std::make_unique<QObject>();
        bool answered = false;
        panels.savePanel({"Back Up Vault", "Back Up", {}, "backup.7z", {}}, owner.get(),
                         [&](const std::optional<QUrl>&) { answered = true; });
        auto* panel = panels.findChild<QProcess*>();
        QVERIFY(panel && panel->waitForStarted());
        QTest::keyClick(&window, Qt::Key_A);
        QCOMPARE(window.keys, 0);

        owner.reset();
        QTest::keyClick(&window, Qt::Key_A);
        QCOMPARE(window.keys, 1);
        QVERIFY(panel->waitForFinished(1500));
        QCOMPARE(panel->exitStatus(), QProcess::NormalExit);
        QCOMPARE(panel->exitCode(), 1); // read its request, showed it, and was closed
        QTest::qWait(50);
        QVERIFY(!answered);
    }

    // Icons come from the icon theme by type and draw something even without a desktop, also
    // where the platform names only hicolor, which has no icons for types or folders.
    void itemIconsComeFromTheIconTheme() {
        QIcon::setThemeName({});
        QIcon::setFallbackThemeName("hicolor");
        QTemporaryDir dir;
        testsupport::writeFile(dir.filePath("notes.txt"), "notes");
        testsupport::writeFile(dir.filePath("unknown.zzz9"), QByteArray(64, '\x01'));
        QDir().mkpath(dir.filePath("Photos"));
        QDir().mkpath(dir.filePath("Photos.album"));
        for (const char* name : {"notes.txt", "unknown.zzz9", "Photos"})
            QVERIFY2(!platform::Workspace::iconFor(dir.filePath(name)).pixmap(24).isNull(), name);
        const QString folder = platform::Workspace::iconFor(dir.filePath("Photos")).name();
        QVERIFY(folder != platform::Workspace::iconFor(dir.filePath("notes.txt")).name());
        QCOMPARE(platform::Workspace::iconFor(dir.filePath("Photos.album")).name(), folder);
    }
};

QTEST_MAIN(TestPlatformUi)
#include "tst_platformui.moc"

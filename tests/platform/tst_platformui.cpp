// The desktop's file pickers and file icons for real: Qt's own file dialogs run offscreen and
// are answered from a timer, as a person would answer them.

#include "platform/Panels.h"
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
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace {

// What a panel answers once `work` has had its dialog, waited for while the event loop runs
// (as the window's would); nothing when it never answers. A dialog `work` leaves open is
// cancelled, so that a test fails instead of waiting forever.
template <typename Answer, typename Open>
std::optional<Answer> answerOf(Open open, const std::function<void(QFileDialog*)>& work) {
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
    QObject owner;
    std::optional<std::optional<Answer>> answer;
    open(&owner, [&](const std::optional<Answer>& chosen) { answer = chosen; });
    (void)QTest::qWaitFor([&] { return answer.has_value(); }, 20000);
    return answer.value_or(std::nullopt);
}

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
    // button says so; one typed is opened. A save panel proposes the name and type and says what it is for. A lock
    // replaces the screen that asked: its panel closes, and nothing chosen arrives.
    void panelsAnswerAsTheUserChose() {
        QTemporaryDir dir;
        const QString photos = dir.filePath("Photos");
        QDir().mkpath(photos);
        platform::Panels panels;
        const auto open = [&](auto... args) { panels.openPanel({true, true, true, "Add to Vault", {}}, args...); };
        QCOMPARE(answerOf<QList<QUrl>>(open, [&](QFileDialog* dialog) {
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
                 QList<QUrl>({QUrl::fromLocalFile(photos)}));

        const platform::SavePanelOptions options{"Back Up Vault", "Back Up", "Save an encrypted backup.",
                                                 "MorvantaVault-Backup.7z", {"application/x-7z-compressed"}};
        const auto save = [&](auto... args) { panels.savePanel(options, args...); };
        QCOMPARE(answerOf<QUrl>(save, [&](QFileDialog* dialog) {
                     QCOMPARE(dialog->findChild<QLabel*>("panelMessage")->text(), options.message);
                     QCOMPARE(dialog->nameFilters().size(), 1);
                     QVERIFY2(dialog->nameFilters().first().contains("*.7z"),
                              qPrintable(dialog->nameFilters().first()));
                     dialog->setDirectory(dir.path());
                     QMetaObject::invokeMethod(dialog, "accept");
                 }),
                 QUrl::fromLocalFile(dir.filePath("MorvantaVault-Backup.7z")));
        QCOMPARE(answerOf<QUrl>(save, [](QFileDialog* dialog) { dialog->reject(); }), std::nullopt);

        auto owner = std::make_unique<QObject>();
        bool answered = false;
        panels.savePanel(options, owner.get(), [&](const std::optional<QUrl>&) { answered = true; });
        QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
        owner.reset();
        QTRY_VERIFY(!QApplication::activeModalWidget());
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

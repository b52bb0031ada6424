// A Qt window for the tests: one widget of the kind asked for, with the focus in it.
//
// Usage: qt_window TITLE KIND. Prints "ready" once it is up.

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTextBrowser>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>
#include <memory>

namespace {

std::unique_ptr<QWidget> makeWidget(const QString& kind)
{
    if (kind == QStringLiteral("text-browser")) {
        auto widget = std::make_unique<QTextBrowser>();
        widget->setPlainText(QStringLiteral("Some text"));
        return widget;
    }
    if (kind == QStringLiteral("text")) {
        return std::make_unique<QPlainTextEdit>(QStringLiteral("Some text"));
    }
    if (kind == QStringLiteral("entry") || kind == QStringLiteral("dialog")) {
        return std::make_unique<QLineEdit>(QStringLiteral("Some text"));
    }
    if (kind == QStringLiteral("read-only-entry")) {
        auto widget = std::make_unique<QLineEdit>(QStringLiteral("Some text"));
        widget->setReadOnly(true);
        return widget;
    }
    if (kind == QStringLiteral("combo-box")) {
        auto widget = std::make_unique<QComboBox>();
        widget->setEditable(true);
        return widget;
    }
    if (kind == QStringLiteral("spin-box")) {
        return std::make_unique<QSpinBox>();
    }
    auto widget = std::make_unique<QLabel>(QStringLiteral("Some text"));
    widget->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return widget;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    QWidget window;
    window.resize(400, 200);
    QDialog dialog(&window);

    const QString kind = arguments.at(2);
    QWidget& host = kind == QStringLiteral("dialog") ? dialog : window;
    host.setWindowTitle(arguments.at(1));
    auto* layout = new QVBoxLayout(&host);
    QWidget* widget = makeWidget(kind).release();
    layout->addWidget(widget); // owns it from here on
    widget->setFocus();
    window.show();
    if (&host == &dialog) {
        dialog.open();
    }
    QTimer::singleShot(0, &application, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QApplication::exec();
}

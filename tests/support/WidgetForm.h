// A shown, active top-level form for widget tests: the box under test and a
// neighbour to move the focus to, so that entering and leaving the box run
// through real focus events.
#pragma once

#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace qal::test {

template <class Box>
class WidgetForm
{
public:
    WidgetForm()
        : box(new Box(&form))
        , other(new QLineEdit(&form))
    {
        auto* layout = new QHBoxLayout(&form);
        layout->addWidget(box);
        layout->addWidget(other);
        other->setObjectName(QStringLiteral("other"));
        form.resize(320, 40);
        form.show();
        form.activateWindow();
        active = QTest::qWaitForWindowActive(&form);
        other->setFocus(Qt::OtherFocusReason);
    }

    void enter() { box->setFocus(Qt::TabFocusReason); }
    void leave() { other->setFocus(Qt::TabFocusReason); }
    // Types `text` into the box from its end.
    void type(const QString& text)
    {
        box->setCursorPosition(int(box->text().size()));
        QTest::keyClicks(box, text);
    }

    QWidget form;
    Box* box;
    QLineEdit* other;
    bool active = false;
};

} // namespace qal::test

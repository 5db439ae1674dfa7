#include "FindBar.hpp"

#include "ViewTexts.hpp"

#include <QTimer>

namespace tarnwick {

FindBar::FindBar(QWidget* parent)
    : QLineEdit(parent)
    , m_pause(new QTimer(this))
{
    setObjectName("findBar");
    setPlaceholderText(ViewTexts::findPlaceholder);
    setClearButtonEnabled(true);
    setMaximumWidth(220);
    m_pause->setSingleShot(true);
    m_pause->setInterval(pauseMilliseconds);
    connect(this, &QLineEdit::textEdited, m_pause, qOverload<>(&QTimer::start));
    connect(m_pause, &QTimer::timeout, this, [this] { Q_EMIT searchRequested(text()); });
    connect(this, &QLineEdit::returnPressed, this, [this] {
        m_pause->stop();
        Q_EMIT searchRequested(text());
    });
}

}

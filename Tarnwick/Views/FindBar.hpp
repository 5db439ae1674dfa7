#pragma once

#include <QLineEdit>

class QTimer;

namespace tarnwick {

// The toolbar's search field: what is typed goes to the search pane a moment after the
// typing stops, or at once on Return.
class FindBar : public QLineEdit {
    Q_OBJECT

public:
    static constexpr int pauseMilliseconds = 250;

    explicit FindBar(QWidget* parent = nullptr);

Q_SIGNALS:
    void searchRequested(const QString& text);

private:
    QTimer* m_pause;
};

}

#pragma once

#include <QWidget>

#include <cstdint>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tarnwick {

// The strip over the map while a scan runs: what is scanned, how many items so far, the
// folder being read now, and the button that stops it.
class ScanBanner : public QWidget {
    Q_OBJECT

public:
    explicit ScanBanner(QWidget* parent = nullptr);

    void show(const QString& rootName, std::int64_t itemCount, const QString& currentPath);
    [[nodiscard]] QString itemText() const;
    [[nodiscard]] QString pathText() const;

Q_SIGNALS:
    void stopRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* m_title;
    QLabel* m_path;
    QProgressBar* m_activity;
    QPushButton* m_stop;
    QString m_fullPath;
};

}

#pragma once

#include <QWidget>

#include <string>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace tarnwick {

// What the window shows before anything is scanned: an invitation to choose a disk or a
// folder, a button per disk and for the home folder, and why the last scan failed, if it did.
class StartView : public QWidget {
    Q_OBJECT

public:
    struct Choice {
        QString title;
        QString detail;
        std::string path;
    };

    explicit StartView(QWidget* parent = nullptr);

    void setChoices(const std::vector<Choice>& choices);
    void setFailure(const QString& message);

Q_SIGNALS:
    void sourceChosen(const QString& path);
    void chooseFolderRequested();

private:
    QLabel* m_failure;
    QWidget* m_choices;
    QVBoxLayout* m_choiceLayout;
};

}

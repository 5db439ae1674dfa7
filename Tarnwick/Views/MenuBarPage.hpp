#pragma once

#include "MenuBar/MenuBarSegment.hpp"
#include "MenuBar/MenuBarStyle.hpp"

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

class QCheckBox;
class QLabel;
class QListWidget;
class QRadioButton;

namespace tarnwick {

class HistoryFeed;

class UserDefaults;

// The settings of the tray item: whether it is shown, which disks, what of them, and one
// segment per disk or only the disk that needs attention, with a preview of the picture.
// Every change is saved at once.
class MenuBarPage : public QWidget {
    Q_OBJECT

public:
    MenuBarPage(std::shared_ptr<UserDefaults> defaults, HistoryFeed& history, QWidget* parent = nullptr);

    // The style the controls show.
    [[nodiscard]] MenuBarStyle style() const;
    [[nodiscard]] QCheckBox* shownSwitch() const { return m_shown; }
    [[nodiscard]] QListWidget* diskList() const { return m_diskList; }
    [[nodiscard]] const std::vector<MenuBarSegment>& previewSegments() const { return m_previewSegments; }
    [[nodiscard]] QString previewText() const;
    [[nodiscard]] bool isPreviewing() const { return m_previewing > 0; }

    // Sets the controls and saves, as the user would.
    void apply(const MenuBarStyle& style);
    // Reads the shown switch again (the daily snapshot changes it).
    void reloadShown();

Q_SIGNALS:
    void changed();
    void previewShown();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showStyle(const MenuBarStyle& style);
    void save();
    void updatePreview();

    std::shared_ptr<UserDefaults> m_defaults;
    HistoryFeed& m_history;
    bool m_applying = false;
    int m_previewing = 0;
    std::vector<MenuBarSegment> m_previewSegments;

    QCheckBox* m_shown;
    QRadioButton* m_all;
    QRadioButton* m_physical;
    QRadioButton* m_chosen;
    QListWidget* m_diskList;
    QCheckBox* m_percent;
    QCheckBox* m_bytes;
    QCheckBox* m_change;
    QRadioButton* m_mostNotable;
    QRadioButton* m_each;
    QLabel* m_picture;
    QLabel* m_previewLines;
};

}

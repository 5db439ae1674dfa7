#pragma once

#include "Scanning/InaccessibleSummary.hpp"
#include "Scanning/IssueKind.hpp"
#include "Scanning/NodeID.hpp"

#include <QDialog>

#include <memory>
#include <string>
#include <vector>

class QVBoxLayout;

namespace tarnwick {

class ScanTree;

// Everything a scan could not read below a folder, grouped: the places it was refused, by the
// area they lie in with a few examples each, then the other read problems by their kind.
class UnreadableSheet : public QDialog {
    Q_OBJECT

public:
    struct OtherProblem {
        IssueKind kind = IssueKind::other;
        int count = 0;
        std::vector<std::string> examples; // at most InaccessibleSummary::maxExamples

        bool operator==(const OtherProblem&) const = default;
    };

    struct Content {
        InaccessibleSummary refused;
        std::vector<OtherProblem> others; // in the order of the kinds

        [[nodiscard]] bool isEmpty() const { return refused.isEmpty() && others.empty(); }
        // Places counted in the button that opens the sheet.
        [[nodiscard]] int placeCount() const;
    };

    // Linear in the tree's issues.
    static Content make(const ScanTree& tree, NodeID under, const std::string& home);

    UnreadableSheet(std::shared_ptr<const ScanTree> tree, NodeID under, std::string home, QWidget* parent = nullptr);

    [[nodiscard]] bool isLoading() const { return m_loading; }
    // The groups' headings as shown.
    [[nodiscard]] QStringList headings() const;

Q_SIGNALS:
    void loaded();

private:
    void showContent(const Content& content);
    void addGroup(const QString& heading, const QString& explanation, const std::vector<std::string>& examples, int count);

    std::string m_home;
    QVBoxLayout* m_groups;
    QStringList m_headings;
    bool m_loading = true;
};

}

#include "UnreadableSheet.hpp"

#include "OffThread.hpp"
#include "Scanning/ScanTree.hpp"
#include "Scanning/ScopeResolver.hpp"
#include "ViewFormat.hpp"
#include "ViewTexts.hpp"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnwick {

namespace {

QString text(std::string_view view)
{
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QString capitalized(QString phrase)
{
    if (!phrase.isEmpty())
        phrase[0] = phrase[0].toUpper();
    return phrase;
}

}

int UnreadableSheet::Content::placeCount() const
{
    int count = 0;
    for (const InaccessibleSummary::Group& group : refused.groups)
        count += group.count;
    for (const OtherProblem& problem : others)
        count += problem.count;
    return count;
}

UnreadableSheet::Content UnreadableSheet::make(const ScanTree& tree, NodeID under, const std::string& home)
{
    Content content;
    content.refused = inaccessibleSummary(tree, under, home);
    std::vector<OtherProblem> byKind;
    for (IssueKind kind : allIssueKinds)
        byKind.push_back({ kind, 0, {} });
    for (const ScanIssue& issue : tree.issues()) {
        if (issue.kind == IssueKind::permissionDenied || (issue.node != under && !tree.isAncestor(under, issue.node)))
            continue;
        OtherProblem& problem = byKind[static_cast<std::size_t>(issue.kind)];
        ++problem.count;
        if (problem.examples.size() < InaccessibleSummary::maxExamples)
            problem.examples.push_back(tree.path(issue.node));
    }
    std::ranges::copy_if(byKind, std::back_inserter(content.others), [](const OtherProblem& problem) { return problem.count > 0; });
    return content;
}

UnreadableSheet::UnreadableSheet(std::shared_ptr<const ScanTree> tree, NodeID under, std::string home, QWidget* parent)
    : QDialog(parent)
    , m_home(home)
    , m_groups(new QVBoxLayout())
{
    setWindowTitle(ViewTexts::unreadableTitle);
    setObjectName("unreadableSheet");
    resize(620, 560);
    auto* title = new QLabel(ViewTexts::unreadableTitle, this);
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    auto* intro = new QLabel(ViewTexts::unreadableIntro, this);
    intro->setWordWrap(true);
    intro->setStyleSheet("color: #4B5563;");
    auto* busy = new QProgressBar(this);
    busy->setRange(0, 0);
    busy->setTextVisible(false);
    busy->setFixedHeight(4);

    auto* list = new QWidget();
    list->setLayout(m_groups);
    m_groups->setContentsMargins(0, 0, 6, 0);
    m_groups->setSpacing(10);
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(list);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(ViewTexts::close, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(22, 20, 22, 16);
    column->setSpacing(10);
    column->addWidget(title);
    column->addWidget(intro);
    column->addWidget(busy);
    column->addWidget(scroll, 1);
    column->addWidget(buttons);

    OffThread::run<Content>(
        this, [tree, under, home = std::move(home)] { return make(*tree, under, home); },
        [this, busy](Content content) {
            busy->hide();
            showContent(content);
            m_loading = false;
            Q_EMIT loaded();
        });
}

QStringList UnreadableSheet::headings() const
{
    return m_headings;
}

void UnreadableSheet::showContent(const Content& content)
{
    for (const InaccessibleSummary::Group& group : content.refused.groups)
        addGroup(capitalized(QString::fromStdString(group.phrase())), ViewTexts::areaExplanation(static_cast<int>(group.area)), group.examples,
            group.count);
    for (const OtherProblem& problem : content.others) {
        QString explanation = IssueTexts::explanation(problem.kind) ? text(*IssueTexts::explanation(problem.kind)) : QString();
        addGroup(ViewTexts::itemsWithIssue(text(IssueTexts::label(problem.kind)), problem.count, ViewFormat::count(problem.count)), explanation,
            problem.examples, problem.count);
    }
    m_groups->addStretch(1);
}

void UnreadableSheet::addGroup(const QString& heading, const QString& explanation, const std::vector<std::string>& examples, int count)
{
    m_headings << heading;
    auto* card = new QWidget();
    card->setObjectName("card");
    card->setAttribute(Qt::WA_StyledBackground);
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(14, 12, 14, 12);
    column->setSpacing(4);
    auto* title = new QLabel(heading);
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    title->setFont(bold);
    title->setTextFormat(Qt::PlainText);
    column->addWidget(title);
    if (!explanation.isEmpty()) {
        auto* note = new QLabel(explanation);
        note->setWordWrap(true);
        note->setStyleSheet("color: #4B5563;");
        column->addWidget(note);
    }
    QStringList paths;
    for (const std::string& example : examples)
        paths << ViewFormat::homePath(example, m_home);
    if (count > static_cast<int>(examples.size()))
        paths << ViewTexts::andMore(ViewFormat::count(count - static_cast<int>(examples.size())));
    auto* places = new QLabel(paths.join(QStringLiteral("\n")));
    places->setTextFormat(Qt::PlainText);
    places->setTextInteractionFlags(Qt::TextSelectableByMouse);
    places->setStyleSheet("color: #6B7280; padding-top: 4px;");
    column->addWidget(places);
    m_groups->addWidget(card);
}

}

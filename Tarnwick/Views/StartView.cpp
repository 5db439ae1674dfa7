#include "StartView.hpp"

#include "ViewTexts.hpp"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnwick {

StartView::StartView(QWidget* parent)
    : QWidget(parent)
    , m_failure(new QLabel(this))
    , m_choices(new QWidget(this))
    , m_choiceLayout(new QVBoxLayout(m_choices))
{
    setObjectName("startView");
    auto* title = new QLabel(ViewTexts::startTitle, this);
    title->setObjectName("startTitle");
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.9);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    title->setAlignment(Qt::AlignCenter);
    auto* detail = new QLabel(ViewTexts::startDetail, this);
    detail->setWordWrap(true);
    detail->setAlignment(Qt::AlignCenter);
    detail->setStyleSheet("color: #6B7280;");
    detail->setFixedWidth(460);
    m_failure->setWordWrap(true);
    m_failure->setAlignment(Qt::AlignCenter);
    m_failure->setFixedWidth(460);
    m_failure->setStyleSheet("background: #FDECEC; color: #8A1C1C; border-radius: 8px; padding: 10px;");
    m_failure->hide();
    m_choiceLayout->setContentsMargins(0, 0, 0, 0);
    m_choiceLayout->setSpacing(8);
    auto* choose = new QPushButton(ViewTexts::chooseFolder, this);
    choose->setObjectName("chooseFolder");
    choose->setProperty("accent", true);
    choose->setMinimumWidth(320);
    choose->setMinimumHeight(36);
    connect(choose, &QPushButton::clicked, this, &StartView::chooseFolderRequested);

    auto* column = new QVBoxLayout(this);
    column->addStretch(2);
    column->addWidget(title, 0, Qt::AlignHCenter);
    column->addSpacing(6);
    column->addWidget(detail, 0, Qt::AlignHCenter);
    column->addSpacing(18);
    column->addWidget(m_failure, 0, Qt::AlignHCenter);
    column->addWidget(m_choices, 0, Qt::AlignHCenter);
    column->addSpacing(6);
    column->addWidget(choose, 0, Qt::AlignHCenter);
    column->addStretch(3);
}

void StartView::setChoices(const std::vector<Choice>& choices)
{
    while (QLayoutItem* item = m_choiceLayout->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const Choice& choice : choices) {
        auto* button = new QPushButton(m_choices);
        button->setObjectName("startChoice");
        button->setText(choice.detail.isEmpty() ? choice.title : choice.title + QStringLiteral("   ·   ") + choice.detail);
        button->setMinimumWidth(320);
        button->setMinimumHeight(36);
        button->setCursor(Qt::PointingHandCursor);
        QString path = QString::fromStdString(choice.path);
        connect(button, &QPushButton::clicked, this, [this, path] { Q_EMIT sourceChosen(path); });
        m_choiceLayout->addWidget(button);
    }
}

void StartView::setFailure(const QString& message)
{
    m_failure->setText(ViewTexts::scanFailed + QStringLiteral(": ") + message);
    m_failure->setVisible(!message.isEmpty());
}

}

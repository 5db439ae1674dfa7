#include "StartView.hpp"

#include "MapPalette.hpp"
#include "ViewTexts.hpp"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace tarnwick {

namespace {

// A small ring map as the emblem above the invitation, in the content colours.
class Emblem : public QWidget {
public:
    explicit Emblem(QWidget* parent)
        : QWidget(parent)
    {
        setFixedSize(132, 132);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        struct Arc {
            int ring;
            double start;
            double end;
            ContentCategory category;
        };
        constexpr std::array<Arc, 11> arcs { {
            { 0, 0.00, 0.34, ContentCategory::video },
            { 0, 0.34, 0.58, ContentCategory::photos },
            { 0, 0.58, 0.80, ContentCategory::developer },
            { 0, 0.80, 1.00, ContentCategory::documents },
            { 1, 0.00, 0.20, ContentCategory::video },
            { 1, 0.20, 0.30, ContentCategory::music },
            { 1, 0.34, 0.52, ContentCategory::photos },
            { 1, 0.58, 0.70, ContentCategory::developer },
            { 1, 0.70, 0.78, ContentCategory::caches },
            { 1, 0.80, 0.92, ContentCategory::documents },
            { 1, 0.92, 0.98, ContentCategory::archives },
        } };
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPointF center = rect().center() + QPointF(0.5, 0.5);
        for (const Arc& arc : arcs) {
            double inner = 26 + arc.ring * 20;
            double outer = inner + 19;
            QRectF outerBox(center.x() - outer, center.y() - outer, 2 * outer, 2 * outer);
            QRectF innerBox(center.x() - inner, center.y() - inner, 2 * inner, 2 * inner);
            double from = 90 - arc.start * 360;
            double sweep = -(arc.end - arc.start) * 360;
            QPainterPath path;
            path.arcMoveTo(outerBox, from);
            path.arcTo(outerBox, from, sweep);
            path.arcTo(innerBox, from + sweep, -sweep);
            path.closeSubpath();
            painter.setPen(QPen(QColor(0xF3, 0xF5, 0xF8), 2));
            painter.setBrush(MapPalette::forRing(MapPalette::group(ColorGroup::content(arc.category), 0), arc.ring));
            painter.drawPath(path);
        }
    }
};

}

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

    // A wrapped label in a centred column gets no height for its second line by itself.
    detail->setMinimumHeight(detail->heightForWidth(detail->width()));

    auto* column = new QVBoxLayout(this);
    column->addStretch(2);
    column->addWidget(new Emblem(this), 0, Qt::AlignHCenter);
    column->addSpacing(14);
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
    m_failure->setMinimumHeight(m_failure->heightForWidth(m_failure->width()));
    m_failure->setVisible(!message.isEmpty());
}

}

#include "ui/na_attributed_string.h"

#include <QLabel>
#include <algorithm>

#include "ui/na_drawing.h"

namespace sysmend {

NAAttributedString::NAAttributedString(const QString& text, const NATextAttributes& attributes)
    : text_(text) {
    if (!text_.isEmpty())
        runs_.append({0, length(), attributes});
}

NATextAttributes NAAttributedString::attributesAt(int index) const {
    for (const Run& run : runs_) {
        if (index >= run.start && index < run.start + run.length)
            return run.attributes;
    }
    return {};
}

void NAAttributedString::setAttributes(const NATextAttributes& attributes, int start, int length) {
    const int begin = std::clamp(start, 0, this->length());
    const int end = std::clamp(start + std::max(length, 0), begin, this->length());
    if (begin == end)
        return;
    QList<Run> result;
    bool inserted = false;
    for (const Run& run : std::as_const(runs_)) {
        const int runEnd = run.start + run.length;
        if (run.start < begin)
            result.append({run.start, std::min(runEnd, begin) - run.start, run.attributes});
        if (!inserted && runEnd > begin) {
            result.append({begin, end - begin, attributes});
            inserted = true;
        }
        if (runEnd > end) {
            const int from = std::max(run.start, end);
            result.append({from, runEnd - from, run.attributes});
        }
    }
    runs_ = result;
    mergeRuns();
}

void NAAttributedString::mergeRuns() {
    QList<Run> merged;
    for (const Run& run : std::as_const(runs_)) {
        if (run.length <= 0)
            continue;
        if (!merged.isEmpty() && merged.last().attributes == run.attributes)
            merged.last().length += run.length;
        else
            merged.append(run);
    }
    runs_ = merged;
}

namespace {

QString cssFor(const NATextAttributes& attributes) {
    QString css;
    if (attributes.font) {
        const QFont& f = *attributes.font;
        css += QStringLiteral("font-family:'%1';").arg(f.family());
        if (f.pixelSize() > 0)
            css += QStringLiteral("font-size:%1px;").arg(f.pixelSize());
        else
            css += QStringLiteral("font-size:%1pt;").arg(f.pointSizeF());
        css += QStringLiteral("font-weight:%1;").arg(static_cast<int>(f.weight()));
        if (f.italic())
            css += QStringLiteral("font-style:italic;");
    }
    if (attributes.foregroundColor) {
        const QColor& c = *attributes.foregroundColor;
        css += QStringLiteral("color:rgba(%1,%2,%3,%4);")
                   .arg(c.red())
                   .arg(c.green())
                   .arg(c.blue())
                   .arg(c.alphaF());
    }
    return css;
}

}  // namespace

QString NAAttributedString::toHtml() const {
    QString html;
    for (const Run& run : runs_) {
        QString text = text_.mid(run.start, run.length).toHtmlEscaped();
        text.replace(QLatin1Char('\n'), QStringLiteral("<br>"));
        const QString css = cssFor(run.attributes);
        if (css.isEmpty())
            html += text;
        else
            html += QStringLiteral("<span style=\"%1\">%2</span>").arg(css, text);
    }
    return html;
}

NAAttributedString attristr(const QString& text, const NATextAttributes& attributes,
                            const QList<QPair<QString, NATextAttributes>>& attribute) {
    NAAttributedString result(text, attributes);
    for (const auto& [substring, substringAttributes] : attribute) {
        if (substring.isEmpty())
            continue;
        const qsizetype at = text.indexOf(substring);
        if (at >= 0)
            result.setAttributes(substringAttributes, static_cast<int>(at),
                                 static_cast<int>(substring.size()));
    }
    return result;
}

QColor colorFromAttributeStr(const NAAttributedString* string) {
    if (string && string->length() > 0) {
        if (const auto color = string->attributesAt(0).foregroundColor)
            return *color;
    }
    return NAColor(80);
}

void setAttributedText(QLabel* label, const NAAttributedString& string) {
    label->setTextFormat(Qt::RichText);
    label->setText(string.toHtml());
}

}  // namespace sysmend

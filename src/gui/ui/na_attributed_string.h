// Text with styled runs (font, text colour), for summary lines and hints that show some words
// differently, e.g. a count in bold blue. A QLabel shows it through toHtml() or
// setAttributedText().
#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QPair>
#include <QString>
#include <optional>

class QLabel;

namespace sysmend {

// The style of a run; what is unset is left to whoever shows the text.
struct NATextAttributes {
    std::optional<QFont> font;
    std::optional<QColor> foregroundColor;

    bool operator==(const NATextAttributes&) const = default;
};

class NAAttributedString {
  public:
    struct Run {
        int start = 0;
        int length = 0;
        NATextAttributes attributes;
        bool operator==(const Run&) const = default;
    };

    NAAttributedString() = default;
    NAAttributedString(const QString& text, const NATextAttributes& attributes);

    const QString& string() const { return text_; }
    int length() const { return static_cast<int>(text_.size()); }

    // The attributes at `index`; empty attributes outside the text.
    NATextAttributes attributesAt(int index) const;
    // Gives the characters [start, start + length) these attributes, replacing what they had.
    // The range is clipped to the text.
    void setAttributes(const NATextAttributes& attributes, int start, int length);

    // Contiguous runs covering the whole text, neighbours with equal attributes merged.
    const QList<Run>& runs() const { return runs_; }

    // Rich text for a QLabel: each run a span with its font and colour, line breaks kept.
    QString toHtml() const;

    bool operator==(const NAAttributedString&) const = default;

  private:
    void mergeRuns();

    QString text_;
    QList<Run> runs_;
};

// `text` with `attributes`, then every listed substring restyled with its own attributes: the
// first occurrence of each, in list order; a substring that does not occur changes nothing.
NAAttributedString attristr(const QString& text, const NATextAttributes& attributes,
                            const QList<QPair<QString, NATextAttributes>>& attribute);

// The text colour at index 0, or NAColor(80) when there is no string, no text or no colour.
QColor colorFromAttributeStr(const NAAttributedString* string);

// Shows `string` in `label` as rich text.
void setAttributedText(QLabel* label, const NAAttributedString& string);

}  // namespace sysmend

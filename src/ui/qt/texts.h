// Conversions between the form's texts, which are UTF-8 with CR LF, and Qt's.
#pragma once

#include <QString>
#include <QTextDocument>

#include <string>
#include <string_view>

inline QString to_qt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// What the form stores of a text box that shows `shown`, whose lines end in LF.
inline std::string form_text(QString shown) {
  return shown.replace(u'\n', QStringLiteral("\r\n")).toStdString();
}

// A tool tip that shows `text` as it is. File names are untrusted: Qt must not take them for
// markup.
inline QString plain_tip(std::string_view text) {
  const QString tip = to_qt(text);
  return Qt::mightBeRichText(tip) ? Qt::convertFromPlainText(tip) : tip;
}

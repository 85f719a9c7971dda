// The record that every XMLSection on one document shares.
#ifndef ZENUTL_CONFIG_XML_DOCUMENT_STATE_H_
#define ZENUTL_CONFIG_XML_DOCUMENT_STATE_H_

#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include <boost/shared_ptr.hpp>

#include "zenutl/cstring.h"

// Counted by hand, not atomically: all sections on one document belong to one thread at a time.
// A parsed document belongs to its parser; a document built in memory is released here.
struct XMLDocumentState {
  int mUseCount = 1;
  boost::shared_ptr<xercesc::XercesDOMParser> mpParser;
  xercesc::DOMDocument* mpDocument = nullptr;  // set only when there is no parser
  CString mFileName;                           // empty unless built from a path
  // The file was there but could not be read: Flush must not replace it with what is here.
  bool mFileUnreadable = false;

  XMLDocumentState() = default;
  XMLDocumentState(const XMLDocumentState&) = delete;
  XMLDocumentState& operator=(const XMLDocumentState&) = delete;
  ~XMLDocumentState() {
    if (!mpParser && mpDocument) mpDocument->release();
  }

  xercesc::DOMDocument* Document() const { return mpParser ? mpParser->getDocument() : mpDocument; }
};

#endif  // ZENUTL_CONFIG_XML_DOCUMENT_STATE_H_

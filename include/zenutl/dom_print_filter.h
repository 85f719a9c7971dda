// DOMPrintFilter: a serialisation filter that leaves out chosen kinds of nodes.
//
// `WriteXMLFile` can install one, but as shipped it never does (see write_xml_file.h); the class
// is offered to callers who drive a Xerces-C `DOMLSSerializer` themselves. Nodes whose type is
// not in the mask are always accepted. Among the others, elements named "person" are skipped
// (their children are still considered), elements named "link" are rejected with their subtree,
// other elements are accepted, and text, comment, document and document type nodes are
// rejected. The mask 0x203 shows element, attribute and document type nodes.
//
// Nothing here throws or reports.
#ifndef ZENUTL_DOM_PRINT_FILTER_H_
#define ZENUTL_DOM_PRINT_FILTER_H_

#include <xercesc/dom/DOMLSSerializerFilter.hpp>

class DOMPrintFilter : public xercesc::DOMLSSerializerFilter {
 public:
  explicit DOMPrintFilter(ShowType whatToShow = xercesc::DOMNodeFilter::SHOW_ALL);
  ~DOMPrintFilter() override;

  FilterAction acceptNode(const xercesc::DOMNode* node) const override;
  ShowType getWhatToShow() const override;
  void setWhatToShow(ShowType toShow);

 private:
  ShowType mWhatToShow;
};

#endif  // ZENUTL_DOM_PRINT_FILTER_H_

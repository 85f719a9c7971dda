#include "zenutl/host_dialogs.h"

#include <boost/thread/mutex.hpp>

namespace ZnHostDialogs {
namespace {

// The handlers are copied out under the lock and called outside it, so a handler may itself
// show a message box or install another handler.
boost::mutex& HandlerMutex() {
  static boost::mutex mutex;
  return mutex;
}
MessageBoxHandler& InstalledMessageBoxHandler() {
  static MessageBoxHandler handler;
  return handler;
}
BrowseForFolderHandler& InstalledBrowseForFolderHandler() {
  static BrowseForFolderHandler handler;
  return handler;
}

template <typename Handler>
Handler Swap(Handler& installed, Handler replacement) {
  boost::mutex::scoped_lock lock(HandlerMutex());
  Handler previous = installed;
  installed = replacement;
  return previous;
}

template <typename Handler>
Handler Current(const Handler& installed) {
  boost::mutex::scoped_lock lock(HandlerMutex());
  return installed;
}

}  // namespace

int DefaultAnswer(unsigned int style) {
  // The buttons of each box, in the order they are shown.
  static const int kButtons[][3] = {
      {eAnswerOk, eAnswerOk, eAnswerOk},           {eAnswerOk, eAnswerCancel, eAnswerCancel},
      {eAnswerAbort, eAnswerRetry, eAnswerIgnore}, {eAnswerYes, eAnswerNo, eAnswerCancel},
      {eAnswerYes, eAnswerNo, eAnswerNo},          {eAnswerRetry, eAnswerCancel, eAnswerCancel},
  };
  const unsigned int buttons = style & eButtonMask;
  if (buttons >= sizeof(kButtons) / sizeof(kButtons[0])) return eAnswerOk;
  unsigned int index = (style & eDefaultButtonMask) >> 8;
  if (index > 2) index = 0;
  return kButtons[buttons][index];
}

int ShowMessageBox(CWnd* parent, const char* text, const char* caption, unsigned int style) {
  const MessageBoxHandler handler = Current(InstalledMessageBoxHandler());
  if (!handler) return DefaultAnswer(style);
  MessageBoxRequest request = {parent, CString(text), CString(caption), style};
  return handler(request);
}

bool BrowseForFolder(const BrowseForFolderRequest& request, CString& chosen) {
  const BrowseForFolderHandler handler = Current(InstalledBrowseForFolderHandler());
  if (!handler) return false;
  return handler(request, chosen);
}

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler) {
  return Swap(InstalledMessageBoxHandler(), handler);
}

BrowseForFolderHandler SetBrowseForFolderHandler(BrowseForFolderHandler handler) {
  return Swap(InstalledBrowseForFolderHandler(), handler);
}

}  // namespace ZnHostDialogs

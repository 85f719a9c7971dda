// Host dialogs: the replaceable channel through which library code shows a message box, asks a
// yes/no question or lets the user pick a folder.
//
// The library runs inside a host application and never opens a window of its own. Whatever
// would show a dialog calls one of the functions below, which hands a request to the handler
// the host installed. Without a handler nothing blocks and nothing is shown: a message box
// answers with its default button and a folder browser is cancelled. Tests install a recording
// handler to see what would have been shown and to choose the answers.
//
// Style flags and answers carry the values of the Windows message box, since the callers are
// written in terms of them (`MB_YESNO | MB_ICONINFORMATION` is 68). For the channel through
// which code speaks to the user on a thread, see user_comm.h; this one is for the plain
// dialogs of the path and validation functions.
//
// Error contract: nothing here throws by itself; an exception thrown by an installed handler
// reaches the caller. Handlers may be swapped from any thread; a call uses the handler that was
// installed when it started.
#ifndef ZENUTL_HOST_DIALOGS_H_
#define ZENUTL_HOST_DIALOGS_H_

#include <boost/function.hpp>

#include "zenutl/cstring.h"

// A window of the host application. The library only passes it on to the handlers.
class CWnd;

namespace ZnHostDialogs {

// Buttons (low four bits), icons and default button of a message box.
enum EMessageBoxStyle : unsigned int {
  eOk = 0x0,
  eOkCancel = 0x1,
  eAbortRetryIgnore = 0x2,
  eYesNoCancel = 0x3,
  eYesNo = 0x4,
  eRetryCancel = 0x5,
  eButtonMask = 0xF,
  eIconError = 0x10,  // the "hand" icon
  eIconQuestion = 0x20,
  eIconWarning = 0x30,
  eIconInformation = 0x40,
  eIconMask = 0xF0,
  eDefaultButton1 = 0x000,
  eDefaultButton2 = 0x100,
  eDefaultButton3 = 0x200,
  eDefaultButtonMask = 0xF00,
};

// The button the user pressed.
enum EMessageBoxAnswer : int {
  eAnswerOk = 1,
  eAnswerCancel = 2,
  eAnswerAbort = 3,
  eAnswerRetry = 4,
  eAnswerIgnore = 5,
  eAnswerYes = 6,
  eAnswerNo = 7,
};

struct MessageBoxRequest {
  CWnd* parent;        // may be null
  CString text;        // the message
  CString caption;     // may be empty: the host's own caption
  unsigned int style;  // EMessageBoxStyle flags
};

// Returns one of EMessageBoxAnswer.
typedef boost::function<int(const MessageBoxRequest&)> MessageBoxHandler;

// How a folder the user is pointing at would be taken, as shown in the browser's status line.
struct FolderSelectionStatus {
  CString statusText;
  bool okEnabled;
};

struct BrowseForFolderRequest {
  CWnd* parent;         // may be null
  CString title;        // the instruction shown above the tree
  CString startFolder;  // to be selected when the browser opens; may be empty
  unsigned int flags;   // the platform's browse flags, e.g. 69: file system folders only,
                        // with a status line, in the newer dialog style
  // For a host that shows a status line: call it whenever the selection changes, with the
  // selected folder's path (empty when the item is no file system folder) and its display name.
  // May be empty.
  boost::function<FolderSelectionStatus(const CString& path, const CString& displayName)>
      onSelectionChanged;
};

// Returns true and sets `chosen` when the user picked a folder; false when cancelled. The
// folder may be given in either slash form.
typedef boost::function<bool(const BrowseForFolderRequest&, CString& chosen)>
    BrowseForFolderHandler;

// Shows a message box or asks a question, without blocking unless the handler does.
// With no handler installed: returns DefaultAnswer(style) and shows nothing.
int ShowMessageBox(CWnd* parent, const char* text, const char* caption, unsigned int style);

// The answer of the default button of a box with this style: the first button unless
// eDefaultButton2 or 3 is set, e.g. eOk => eAnswerOk, eYesNo => eAnswerYes,
// eYesNo | eDefaultButton2 => eAnswerNo, eOkCancel | eDefaultButton2 => eAnswerCancel.
int DefaultAnswer(unsigned int style);

// Lets the user pick a folder. With no handler installed: false (cancelled), `chosen` untouched.
bool BrowseForFolder(const BrowseForFolderRequest& request, CString& chosen);

// Install a handler; an empty function restores the default. The previous handler is returned
// so that a caller can put it back.
MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);
BrowseForFolderHandler SetBrowseForFolderHandler(BrowseForFolderHandler handler);

// Installs a handler for the life of a scope and puts the previous one back afterwards.
class ScopedMessageBoxHandler {
 public:
  explicit ScopedMessageBoxHandler(MessageBoxHandler handler)
      : mPrevious(SetMessageBoxHandler(handler)) {}
  ~ScopedMessageBoxHandler() { SetMessageBoxHandler(mPrevious); }
  ScopedMessageBoxHandler(const ScopedMessageBoxHandler&) = delete;
  ScopedMessageBoxHandler& operator=(const ScopedMessageBoxHandler&) = delete;

 private:
  MessageBoxHandler mPrevious;
};

class ScopedBrowseForFolderHandler {
 public:
  explicit ScopedBrowseForFolderHandler(BrowseForFolderHandler handler)
      : mPrevious(SetBrowseForFolderHandler(handler)) {}
  ~ScopedBrowseForFolderHandler() { SetBrowseForFolderHandler(mPrevious); }
  ScopedBrowseForFolderHandler(const ScopedBrowseForFolderHandler&) = delete;
  ScopedBrowseForFolderHandler& operator=(const ScopedBrowseForFolderHandler&) = delete;

 private:
  BrowseForFolderHandler mPrevious;
};

}  // namespace ZnHostDialogs

#endif  // ZENUTL_HOST_DIALOGS_H_

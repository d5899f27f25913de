// The add-on interface: the four entry points an add-on exports and the host functions it calls.
//
// Every host function is called on the host's user-interface thread, from inside an entry point
// or a callback of the add-on; the host checks the state each call is allowed in and reports a call
// made in the wrong state by its name. Pointers passed in are borrowed for the call only.
#pragma once

#include "APIdefs.h"
#include "UniString.hpp"

namespace IO {
class Location;
}

extern "C" {

// Entry points, exported by the add-on and called by the host in this order ----------------------

// Called first, once per host run. The add-on reads envirParams->serverInfo, writes its name and
// description into envirParams->addOnInfo and answers how it wants to be registered
// (APIAddon_DontRegister keeps it out of the host; nothing else is called then).
API_AddonType __ACDLL_CALL CheckEnvironment(API_EnvirParams* envirParams);
// Called once per host run after CheckEnvironment: the only place to register menus and the
// built-in library. A non-zero result stops the add-on's start.
GSErrCode __ACDLL_CALL RegisterInterface(void);
// Called each time the add-on is loaded into memory, before any command: installs the handlers.
GSErrCode __ACDLL_CALL Initialize(void);
// Called before each unload; the add-on releases what it allocated.
GSErrCode __ACDLL_CALL FreeData(void);

// Registration (RegisterInterface only) ---------------------------------------------------------

// Places the menu of 'STR#' menuStrResID at menuPosCode. promptStrResID is a parallel 'STR#' of
// status-bar prompts, 0 for none. Returns APIERR_BADID when the add-on has no such 'STR#' and
// APIERR_BADPARS for an unknown position code.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Register_Menu(short menuStrResID, short promptStrResID,
                                                          APIMenuCodeID menuPosCode, GSFlags menuFlags);
// Declares that the add-on carries its own object library; the host adds it read-only to the active
// libraries, where 'GLIB' lists it last, located at the add-on's file, as the embedded library.
// Returns NoError.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Register_BuiltInLibrary(void);

// Handlers and lifetime (Initialize and later) --------------------------------------------------

// Installs the handler called when an item of menu menuStrResID is chosen; replaces an earlier one.
// Returns APIERR_BADPARS for a null handler. Valid until the add-on is unloaded.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Install_MenuHandler(short menuStrResID,
                                                                APIMenuCommandProc* handlerProc);
// With true, the add-on stays loaded between commands until the host quits (or false is passed);
// otherwise the host may unload it after each command and load it again, with Initialize, before
// the next.
GS_HOST_EXPORT void __ACENV_CALL ACAPI_KeepInMemory(bool keepIn);

// Menu items: 'GMIF', 'SMIF', 'GMIT', 'SMIT' (see API_InterfaceID for the parameters). Allowed from
// Initialize on. Returns APIERR_BADID for a menu the add-on does not have, APIERR_BADINDEX for an
// item past its end, APIERR_BADPARS for missing parameters or an unknown code.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Interface(API_InterfaceID code, void* par1 = nullptr,
                                                      void* par2 = nullptr, void* par3 = nullptr,
                                                      void* par4 = nullptr);

// Modeless windows (Initialize and later, dialog callbacks included) -----------------------------

// Tells the host that the modeless dialog referenceID (the ID DGModelessInit returned) is one of the
// add-on's palettes, enabled in the windows of controlFlags (API_PalEnabled_*); callBackProc (may be
// null) is asked to close, hide or show it. Returns APIERR_BADID when referenceID is not an open
// modeless dialog or is registered already. The registration lasts until
// ACAPI_UnregisterModelessWindow; a dialog closed or an add-on unloaded while still registered is
// reported.
GS_HOST_EXPORT GSErrCode __ACENV_CALL
ACAPI_RegisterModelessWindow(Int32 referenceID, APIPaletteControlCallBackProc* callBackProc,
                             GSFlags controlFlags, const API_Guid& paletteGuid = APINULLGuid);
// Ends the registration of referenceID; APIERR_BADID when it is not registered.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_UnregisterModelessWindow(Int32 referenceID);

// Resources and environment (any entry point) ---------------------------------------------------

// The add-on's own resource module; valid while the add-on is registered.
GS_HOST_EXPORT GSResModule __ACENV_CALL ACAPI_GetOwnResModule(void);
// The add-on's own file, as an absolute location. Returns APIERR_BADPARS for null, APIERR_NOTINIT
// when not known.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_GetOwnLocation(IO::Location* ownFileLoc);
// Fills the host's kind (0, the CAD application), version (ServerMainVers_1900, release 1), build
// number and language. Callable at any time, even with no host running.
GS_HOST_EXPORT void __ACENV_CALL ACAPI_GetReleaseNumber(API_ServerApplicationInfo* serverApplicationInfo);

// Environment (menu commands and dialog callbacks) ------------------------------------------------

// Answers a question about the host's environment; see API_EnvironmentID for the parameters.
//   'PROJ': fills the API_ProjectInfo at par1; a saved project's location is allocated by the host
//           and deleted by the caller.
//   'GREN': fills the API_RendEffects at par1 with the current rendering engine (par2 must be
//           APIRendSet_EffectsID).
//   'CREN': makes par1's rendererID the current engine; APIERR_BADID when no engine has that ID.
//   'GLIB': replaces the contents of the GS::Array<API_LibraryInfo> at par1 with the active
//           libraries in the host's order: the library folders in the order they were added, then
//           the library built into the add-on (ACAPI_Register_BuiltInLibrary), if any. par2 (may be
//           null) is an Int32* that receives the embedded library's position in the array, -1 when
//           there is none.
//   'ALIB': adds the folder at par1 (an IO::Location*) to the end of the active libraries and
//           indexes its library parts (see ACAPI_LibPart_Search). IO::Folder::FolderNotFound when
//           nothing is there, IO::Folder::NotAFolder for a file, IO::Folder::AccessDenied for a
//           folder that cannot be read, APIERR_BADPARS for the empty location. A folder already
//           active stays where it is and NoError is answered.
// APIERR_BADPARS for a null par1 or another par2, APIERR_NOTSUPPORTED for a code this host does not
// answer.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Environment(API_EnvironmentID code, void* par1 = nullptr,
                                                        void* par2 = nullptr, void* par3 = nullptr);

// Library parts (Initialize, menu commands and dialog callbacks) -----------------------------------
//
// The host indexes the parts of a library folder when the folder becomes active: every file whose name
// ends in ".gsm" (in any letter case), in the folder and all its subfolders, is one part, named by
// its file name without that ending. A part's type is named by the file's first line when that line
// reads "! type: NAME", NAME being an API_LibTypeID name without its prefix and ID ("Door", "Window",
// "Object", "Lamp", ..., and "Special" for APILib_SpecID; letter case ignored); any other first line
// makes the part an object (APILib_ObjectID). Each part gets the next index (from 1) and keeps it
// for the host's life, also when its folder is added again. Where two active parts share a name and
// a type, the one of the lower index is found. Names the open project uses that no active library
// holds are missing definitions: they have an index too, and a search for their name finds them,
// whatever the type asked, as long as no active part has that name.

// Finds the part whose name is ancestor->docu_UName (letter case ignored) and whose type is
// ancestor->typeID (API_ZombieLibID: any type); every other member is ignored. On NoError the record is
// filled in: index, type, names, missingDef, isPlaceable, ownerID, and a newly allocated `location`
// that the caller deletes (the empty location for a missing definition). Nothing is allocated on an
// error: APIERR_BADPARS for a null record, APIERR_BADNAME for an empty name or one no part has,
// APIERR_NOTSUPPORTED when createIfMissing asks the host to make the part (this host makes none).
// onlyPlaceable changes nothing here: every part is placeable.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_LibPart_Search(API_LibPart* ancestor, bool createIfMissing,
                                                           bool onlyPlaceable = false);
// Fills in the part of index libPart->index as ACAPI_LibPart_Search does (missing definitions
// included), with a new location the caller deletes. APIERR_BADPARS for a null record,
// APIERR_BADINDEX when no part has that index.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_LibPart_Get(API_LibPart* libPart);

// Add-on communication (any entry point) ----------------------------------------------------------

// Asks whether the add-on identified by mdid is installed and answers command cmdID at version
// cmdVersion. NoError when it does; APIERR_MODULNOTINSTALLED when no such add-on is there,
// APIERR_MODULCMDNOTSUPPORTED when it does not know the command, APIERR_MODULCMDVERSNOTSUPPORTED
// when it knows only older versions, APIERR_BADPARS for a null mdid.
GS_HOST_EXPORT GSErrCode __ACENV_CALL ACAPI_Command_Test(const API_ModulID* mdid, GSType cmdID,
                                                         Int32 cmdVersion);

// The longest resource string, in characters (UTF-16 units); the resource compiler refuses longer
// ones. The string calls below never write more than the room they ask for, whatever an add-on's
// resource image holds: a longer string is cut there.
constexpr Int32 API_ResStringMaxLength = 255;
// The room of the 8-bit forms, in bytes with the terminator: the 256 of the char fields add-ons fill
// with them straight away (API_EnvirParams' addOnInfo.name and .description).
constexpr Int32 API_ResStringBufferLen = 256;

// Copies string `index` (1-based) of 'STR#' resID of resModule into str as NUL-terminated UTF-16;
// str must have room for API_ResStringMaxLength + 1 units. False, and str untouched, when the list
// or the string does not exist.
GS_HOST_EXPORT bool __ACENV_CALL ACAPI_Resource_GetLocUStr(GS::uchar_t* str, short resID, short index,
                                                           GSResModule resModule = ACAPI_GetOwnResModule());
// The same as 8-bit UTF-8 text; str must have room for API_ResStringBufferLen bytes. A longer text
// is cut at a character boundary.
GS_HOST_EXPORT bool __ACENV_CALL ACAPI_Resource_GetLocStr(char* str, short resID, short index,
                                                          GSResModule resModule = ACAPI_GetOwnResModule());
// The fixed (not localised) form; this host keeps one resource file, so it reads the same list.
GS_HOST_EXPORT bool __ACENV_CALL ACAPI_Resource_GetFixStr(char* str, short resID, short index,
                                                          GSResModule resModule = ACAPI_GetOwnResModule());
}

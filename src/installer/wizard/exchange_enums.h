#pragma once
// The enumerations that the engine and its front ends share. Their values are part of the
// contract between the two: front ends store and compare them, and templates name some of
// them by words (see the dialog reader).

// Status of a task in the task list of a dialog with sub-dialogs. The icon aliases
// "icon_not_started", "icon_current", "icon_good_finish", "icon_bad_finish" and
// "icon_inactive" go with the values in this order.
enum TASKSTATUS {
    TASK_NOT_REACHED = 0,
    TASK_CURRENT = 1,
    TASK_FINISHED_GOOD = 2,
    TASK_FINISHED_BAD = 3,
    TASK_INACTIVE = 4,
};

// Which parts of a (sub-)dialog must be refreshed; a bit mask in the order of the list
// "Controls;Fields;Tasks;Buttons". The "update" UI action passes UPDATE_ALL.
enum UPDATETYPE {
    UPDATE_CONTROLS = 1,
    UPDATE_FIELDS = 2,
    UPDATE_TASKS = 4,
    UPDATE_BUTTONS = 8,
    UPDATE_ALL = 31,
};

// When a trigger runs; a bit mask.
enum TRIGGER_EVALUATION {
    TRIGGER_ON_SET = 1, // "Set", "Start": on entering the dialog
    TRIGGER_ON_DYNAMIC = 2, // "Dynamic": after a field changed a variable
    TRIGGER_ON_END = 4, // "End": on leaving the dialog
    TRIGGER_ON_DLG_EVAL = 8, // "DlgEval", "EvalDlg": in the stage work of a Busy dialog
    TRIGGER_ON_BUTTON = 16, // "Button": the action word "EvalTriggers"
    TRIGGER_ON_ALL = 255, // the triggers of the default values
};

// What the engine is doing, as a front end must know it to allow leaving or cancelling.
enum SETTINGSTATE {
    SETTING_IDLE = 0, // the user may be asked and may leave
    SETTING_WORKING = 1, // install, uninstall, revert, cleanup: can't be left
    SETTING_WAITING = 3, // a condition the user must resolve holds the wizard
    SETTING_BUSY = 5, // a Busy dialog runs its stage work
};

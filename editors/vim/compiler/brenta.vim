" :make checks the script in the window; its messages go to the list that :cnext walks.
if exists('current_compiler')
    finish
endif
let current_compiler = 'brenta'

CompilerSet makeprg=brenta\ check\ %:S
" panel.scr(12): warning: text        panel.scr(12): text, an error
CompilerSet errorformat=%f(%l):\ %tarning:\ %m,%f(%l):\ %m,%-G%.%#

" Vim settings for Brenta scripts.
if exists('b:did_ftplugin')
    finish
endif
let b:did_ftplugin = 1

setlocal comments=:// commentstring=//\ %s
setlocal expandtab shiftwidth=4 softtabstop=4 cindent cinoptions=j1,J1
setlocal suffixesadd=.scr include=^\\s*include\\s*\"
compiler brenta

let b:undo_ftplugin = 'setlocal comments< commentstring< expandtab< shiftwidth< softtabstop< cindent< cinoptions<'
            \ . ' suffixesadd< include< makeprg< errorformat<'

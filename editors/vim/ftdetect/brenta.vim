" Scripts of Brenta.
autocmd BufNewFile,BufRead *.scr setfiletype brenta
